# fallback for everything that is not said below
mail postmaster@example.com
maillast
#ATTENTION!
#
#DO NOT MODIFY THIS FILE BECAUSE IT WAS GENERATED AUTOMATICALLY,
#SO ALL YOUR CHANGES WILL BE LOST THE NEXT TIME THE FILE IS GENERATED.

allowhardlink
/var/www/vhosts/system/example.com/logs/*.processed {
	monthly
	rotate 12
	compress
	missingok
	copytruncate
}
/var/www/vhosts/system/example.com/logs/error_log {
	monthly
	rotate 12
	compress
	missingok
	copytruncate
}
/var/www/vhosts/system/example.com/logs/proxy_error_log {
	monthly
	rotate 12
	compress
	missingok
	copytruncate
}
/var/www/vhosts/system/example.com/logs/php-fpm_error.log {
	monthly
	rotate 12
	compress
	missingok
	copytruncate
	nomail
}
