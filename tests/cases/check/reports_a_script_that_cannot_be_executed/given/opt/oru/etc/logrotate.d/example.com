/var/www/vhosts/system/example.com/logs/error_log {
	daily
	missingok
	postrotate
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
	endscript
}
