#ATTENTION!
#
#DO NOT MODIFY THIS FILE BECAUSE IT WAS GENERATED AUTOMATICALLY,
#SO ALL YOUR CHANGES WILL BE LOST THE NEXT TIME THE FILE IS GENERATED.

allowhardlink
/var/www/vhosts/system/team/example.com/logs/*.processed {
	size=10M
	rotate 3
	nocompress
	missingok
	copytruncate
}
/var/www/vhosts/system/team/example.com/logs/error_log {
	size=10M
	rotate 3
	nocompress
	missingok
	copytruncate
}
/var/www/vhosts/system/team/example.com/logs/proxy_error_log {
	size=10M
	rotate 3
	nocompress
	missingok
	copytruncate
}
/var/www/vhosts/system/team/example.com/logs/php-fpm_error.log {
	size=10M
	rotate 3
	nocompress
	missingok
	copytruncate
}
