#ATTENTION!
#
#DO NOT MODIFY THIS FILE BECAUSE IT WAS GENERATED AUTOMATICALLY,
#SO ALL YOUR CHANGES WILL BE LOST THE NEXT TIME THE FILE IS GENERATED.

allowhardlink
# tried several periods here, the last one won -- tn
/var/www/vhosts/system/example.com/logs/*.processed {
	daily
	rotate 4
	compress
	missingok
	copytruncate
	size 10M
	monthly 15
	minsize 1M
   weekly 3
}
/var/www/vhosts/system/example.com/logs/error_log {
	hourly
	rotate 4
	compress
	missingok
	copytruncate
}
/var/www/vhosts/system/example.com/logs/proxy_error_log {
	yearly
	rotate 4
	compress
	missingok
	copytruncate
	maxsize 10M
	size=100k
}
/var/www/vhosts/system/example.com/logs/php-fpm_error.log {
	weekly 6
	rotate 4
	compress
	missingok
	copytruncate
	dateyesterday
	dateext
}
