#ATTENTION!
#
#DO NOT MODIFY THIS FILE BECAUSE IT WAS GENERATED AUTOMATICALLY,
#SO ALL YOUR CHANGES WILL BE LOST THE NEXT TIME THE FILE IS GENERATED.

allowhardlink
/var/www/vhosts/system/example.com/logs/*.processed {
	daily
	rotate 5
	compress
	missingok
	copytruncate
}
/var/www/vhosts/system/example.com/logs/error_log {
	daily
	rotate 5
	compress
	missingok
	copytruncate
}
/var/www/vhosts/system/example.com/logs/proxy_error_log {
	daily
	rotate 5
	compress
	missingok
	copytruncate
}
/var/www/vhosts/system/example.com/logs/php-fpm_error.log {
	daily
	rotate 5
	compress
	missingok
	copytruncate
}
