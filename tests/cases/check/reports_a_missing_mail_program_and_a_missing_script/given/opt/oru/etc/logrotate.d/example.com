/var/www/vhosts/system/example.com/logs/error_log {
	missingok
	mail admin@example.com
	mailfirst
	postrotate
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
	endscript
}
/var/www/vhosts/system/example.com/logs/proxy_error_log {
	missingok
	mail admin@example.com
}
