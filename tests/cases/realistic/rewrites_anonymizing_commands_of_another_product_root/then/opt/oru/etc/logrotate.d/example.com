#ATTENTION!
#
#DO NOT MODIFY THIS FILE BECAUSE IT WAS GENERATED AUTOMATICALLY,
#SO ALL YOUR CHANGES WILL BE LOST THE NEXT TIME THE FILE IS GENERATED.

allowhardlink
/var/www/vhosts/system/example.com/logs/*.processed {
	daily
	rotate 7
	compress
	missingok
	copytruncate
	postrotate
		# keep this order: first the anonymizer, then the statistics
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
		/usr/local/bin/webstats --update "$1"
	endscript
}
/var/www/vhosts/system/example.com/logs/error_log {
	daily
	rotate 7
	compress
	missingok
	copytruncate
  postrotate
    /usr/bin/systemctl reload nginx.service
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
    sleep 1
  endscript
}
/var/www/vhosts/system/example.com/logs/proxy_error_log {
	daily
	rotate 7
	compress
	missingok
	copytruncate
	postrotate
		/usr/local/oru/admin/sbin/anonymize_ip
		/usr/local/bin/webstats --update "$1"
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
	endscript
}
/var/www/vhosts/system/example.com/logs/php-fpm_error.log {
	daily
	rotate 7
	compress
	missingok
	copytruncate
	postrotate
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
	endscript
}
