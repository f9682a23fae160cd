# Access logs only; the other stanzas were moved to the central log host.

allowhardlink

/var/www/vhosts/system/example.com/logs/*.processed {
	weekly
	size=5M
    rotate    30
	compress
    missingok
	copytruncate
	mailfirst
	notifempty
	prerotate
		/usr/bin/webstats --close
	endscript
