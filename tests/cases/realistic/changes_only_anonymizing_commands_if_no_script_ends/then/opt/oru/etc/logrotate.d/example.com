# comments at every end, so that one sees what ends there
/var/www/vhosts/system/example.com/logs/*.processed {
	daily
	rotate 30
	compress
	missingok
	copytruncate
	postrotate
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
	endscript # of postrotate
}

# errors
/var/www/vhosts/system/example.com/logs/error_log {
	daily
	rotate 30
	compress
	missingok
	copytruncate
	sharedscripts
	prerotate
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
	endscript # of prerotate
	postrotate
		/usr/bin/systemctl reload nginx.service
	endscript # of postrotate
}
