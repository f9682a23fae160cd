#ATTENTION!
#
#DO NOT MODIFY THIS FILE BECAUSE IT WAS GENERATED AUTOMATICALLY,
#SO ALL YOUR CHANGES WILL BE LOST THE NEXT TIME THE FILE IS GENERATED.

allowhardlink
/var/www/vhosts/system/example.com/logs/*.processed {
	daily
	rotate 10
	compress
	missingok
	copytruncate
}
/var/www/vhosts/system/example.com/logs/error_log {
	daily
	rotate 10
	compress
	missingok
	copytruncate
}
/var/www/vhosts/system/example.com/logs/proxy_error_log {
	daily
	rotate 10
	compress
	missingok
	copytruncate
}
/var/www/vhosts/system/example.com/logs/php-fpm_error.log {
	daily
	rotate 10
	compress
	missingok
	copytruncate
}

# the old place of the logs, until everything has moved
/var/www/vhosts/example.com/logs/error_log /var/www/vhosts/example.com/logs/xferlog.processed {
	rotate 10
	notifempty
}
