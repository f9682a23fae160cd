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
		# /opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
		/usr/bin/systemctl reload nginx.service
	endscript
}
/var/www/vhosts/system/example.com/logs/error_log {
	daily
	rotate 7
	compress
	missingok
	copytruncate
	postrotate
		nice -n 19 /opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
		/usr/bin/env LANG=C /opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
		/opt/oru/admin/sbin/anonymize_ip
		/opt/oru/admin/sbin/anonymize_ip_v6 --all
		"/opt/oru/admin/sbin/anonymize_ip" --find-rotated-logs $*
	endscript
}
/var/www/vhosts/system/example.com/logs/proxy_error_log {
	daily
	rotate 7
	compress
	missingok
	copytruncate
	prerotate
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
	endscript
	postrotate
	endscript
	lastaction
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
	endscript
}
