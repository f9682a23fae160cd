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
	sharedscripts
	firstaction
		# the old way, before the panel could do it
		/usr/local/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
	endscript
	prerotate
		test -x /usr/bin/webstats && /usr/bin/webstats --close
	endscript
	postrotate
		/usr/bin/systemctl reload nginx.service
		/usr/bin/webstats --open

		logger -t rotate "rotated $1"
	endscript
	preremove
		logger -t rotate "removing $1"
	endscript
	lastaction
		/usr/bin/true
	endscript
}
/var/www/vhosts/system/example.com/logs/error_log {
	daily
	rotate 7
	compress
	missingok
	copytruncate
	lastaction
		/usr/local/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
	endscript
}
/var/www/vhosts/system/example.com/logs/proxy_error_log {
    postrotate
        # nothing to do yet
    endscript
    daily
    rotate 7
}
