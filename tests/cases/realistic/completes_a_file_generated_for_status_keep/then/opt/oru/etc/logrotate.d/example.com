#ATTENTION!
#
#DO NOT MODIFY THIS FILE BECAUSE IT WAS GENERATED AUTOMATICALLY,
#SO ALL YOUR CHANGES WILL BE LOST THE NEXT TIME THE FILE IS GENERATED.

allowhardlink
/var/www/vhosts/system/example.com/logs/*.processed {
	compress
	missingok
	copytruncate
	size=10M
	rotate 2
	mail ops@example.com
	mailfirst
}
/var/www/vhosts/system/example.com/logs/error_log {
	compress
	missingok
	copytruncate
	size=10M
	rotate 2
	mail ops@example.com
	mailfirst
}
/var/www/vhosts/system/example.com/logs/proxy_error_log {
	compress
	missingok
	copytruncate
	size=10M
	rotate 2
	mail ops@example.com
	mailfirst
}
/var/www/vhosts/system/example.com/logs/php-fpm_error.log {
	compress
	missingok
	copytruncate
	size=10M
	rotate 2
	mail ops@example.com
	mailfirst
}
