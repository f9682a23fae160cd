# merged by hand after the move to the new machine
/var/www/vhosts/system/example.com/logs/*.processed {
	weekly
	rotate 8
	nocompress
	missingok
	copytruncate
	postrotate
		/usr/local/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
	endscript
}
/var/www/vhosts/system/example.com/logs/error_log {
	weekly
	rotate 8
	nocompress
	missingok
	copytruncate
	postrotate
		/usr/bin/systemctl reload nginx.service
	endscript
}
/var/www/vhosts/system/example.com/logs/proxy_error_log {
	weekly
	rotate 8
	nocompress
	missingok
	copytruncate
}
