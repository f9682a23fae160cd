#ATTENTION!
#
#DO NOT MODIFY THIS FILE BECAUSE IT WAS GENERATED AUTOMATICALLY,
#SO ALL YOUR CHANGES WILL BE LOST THE NEXT TIME THE FILE IS GENERATED.

allowhardlink
# tried several periods here, the last one won -- tn
/var/www/vhosts/system/example.com/logs/*.processed {
	weekly
	rotate 4
	compress
	missingok
	copytruncate
	minsize 1M
}
/var/www/vhosts/system/example.com/logs/error_log {
	hourly
	rotate 4
	compress
	missingok
	copytruncate
	weekly
}
/var/www/vhosts/system/example.com/logs/proxy_error_log {
	yearly
	rotate 4
	compress
	missingok
	copytruncate
	maxsize 10M
	weekly
}
/var/www/vhosts/system/example.com/logs/php-fpm_error.log {
	weekly
	rotate 4
	compress
	missingok
	copytruncate
	dateyesterday
	dateext
}
