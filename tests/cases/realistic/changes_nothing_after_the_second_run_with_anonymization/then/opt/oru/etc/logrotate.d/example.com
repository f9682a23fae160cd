#ATTENTION!
#
#DO NOT MODIFY THIS FILE BECAUSE IT WAS GENERATED AUTOMATICALLY,
#SO ALL YOUR CHANGES WILL BE LOST THE NEXT TIME THE FILE IS GENERATED.

allowhardlink
/var/www/vhosts/system/example.com/logs/*.processed {
	monthly
	rotate 0
	compress
	mail admin@example.com
	mailfirst
	missingok
	copytruncate
	postrotate
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
	endscript
}
/var/www/vhosts/system/example.com/logs/error_log {
	monthly
	rotate 0
	compress
	mail admin@example.com
	mailfirst
	missingok
	copytruncate
	postrotate
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
	endscript
}
/var/www/vhosts/system/example.com/logs/proxy_error_log {
	monthly
	rotate 0
	compress
	mail admin@example.com
	mailfirst
	missingok
	copytruncate
	postrotate
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
	endscript
}
/var/www/vhosts/system/example.com/logs/php-fpm_error.log {
	monthly
	rotate 0
	compress
	mail admin@example.com
	mailfirst
	missingok
	copytruncate
	postrotate
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
	endscript
}
