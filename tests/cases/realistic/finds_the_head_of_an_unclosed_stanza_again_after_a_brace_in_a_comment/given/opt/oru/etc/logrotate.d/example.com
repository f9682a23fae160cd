# {panel}: keep this file in step with the backup job
# Access logs only; the other stanzas were moved to the central log host.

allowhardlink

/var/www/vhosts/system/example.com/logs/*.processed {
	daily
	rotate 30
	nocompress
	delaycompress
	missingok
    copytruncate
	postrotate
		/usr/bin/systemctl reload nginx.service
	endscript
	notifempty
