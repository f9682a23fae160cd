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
}
/var/www/vhosts/system/example.com/logs/error_log {
	daily
	rotate 7
	compress
	missingok
	copytruncate
}
/var/www/vhosts/system/example.com/logs/proxy_error_log {
	daily
	rotate 7
	compress
	missingok
	copytruncate
}
/var/www/vhosts/system/example.com/logs/php-fpm_error.log {
	daily
	rotate 7
	compress
	missingok
	copytruncate
}

# ---- added by hand: the shop's own workers ----
/var/log/shop/jobs-*.log /var/log/shop/queue.log {
    su root root
    create 0640 www-data adm
    dateext
    dateformat -%Y%m%d-%s
    olddir /var/log/shop/archive
    sharedscripts
    notifempty
    minsize 4k
    maxage 90
    shred
    shredcycles 2
}

# ---- the mail importer, moved here from /etc/logrotate.d ----
/var/log/shop/importer.log {
    rotate 26
    missingok
    extension .log
    addextension .txt
    start 0
    # tabooext was here once, it belongs above the stanzas
}
