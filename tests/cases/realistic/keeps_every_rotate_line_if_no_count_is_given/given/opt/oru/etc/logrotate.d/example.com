#ATTENTION!
#
#DO NOT MODIFY THIS FILE BECAUSE IT WAS GENERATED AUTOMATICALLY,
#SO ALL YOUR CHANGES WILL BE LOST THE NEXT TIME THE FILE IS GENERATED.

allowhardlink
# access logs: half a year
/var/www/vhosts/system/example.com/logs/*.processed {
	weekly
    rotate	26
	nocompress
	missingok
	copytruncate
}
/var/www/vhosts/system/example.com/logs/error_log {
	weekly
rotate 3
	nocompress
	missingok
	copytruncate
}
# none of these
/var/www/vhosts/system/example.com/logs/proxy_error_log {
	weekly
	nocompress
	missingok
	copytruncate
}
/var/www/vhosts/system/example.com/logs/php-fpm_error.log {
	weekly
	rotate 0
	rotate 8
	nocompress
	missingok
	copytruncate
}
