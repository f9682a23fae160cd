#ATTENTION!
#
#DO NOT MODIFY THIS FILE BECAUSE IT WAS GENERATED AUTOMATICALLY,
#SO ALL YOUR CHANGES WILL BE LOST THE NEXT TIME THE FILE IS GENERATED.

allowhardlink
# access logs: half a year
/var/www/vhosts/system/example.com/logs/*.processed {
	daily
    rotate	26
	compress
	missingok
	copytruncate
}
/var/www/vhosts/system/example.com/logs/error_log {
	daily
rotate 3
	compress
	missingok
	copytruncate
}
# none of these
/var/www/vhosts/system/example.com/logs/proxy_error_log {
	daily
	compress
	missingok
	copytruncate
}
/var/www/vhosts/system/example.com/logs/php-fpm_error.log {
	daily
	rotate 0
	rotate 8
	compress
	missingok
	copytruncate
}
