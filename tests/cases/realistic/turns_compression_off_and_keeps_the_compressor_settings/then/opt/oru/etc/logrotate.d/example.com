#ATTENTION!
#
#DO NOT MODIFY THIS FILE BECAUSE IT WAS GENERATED AUTOMATICALLY,
#SO ALL YOUR CHANGES WILL BE LOST THE NEXT TIME THE FILE IS GENERATED.

allowhardlink
# xz instead of gzip, agreed with the backup people
/var/www/vhosts/system/example.com/logs/*.processed {
	daily
	rotate 14
	nocompress
	missingok
	copytruncate
	delaycompress
	compresscmd /usr/bin/xz
	uncompresscmd /usr/bin/unxz
	compressext .xz
	compressoptions -9
}
/var/www/vhosts/system/example.com/logs/error_log {
	daily
	rotate 14
	#compress
	nocompress
	missingok
	copytruncate
	nodelaycompress
}
/var/www/vhosts/system/example.com/logs/proxy_error_log {
	daily
	rotate 14
	compress	# always, says the auditor
	missingok
	copytruncate
	nocompress
}
/var/www/vhosts/system/example.com/logs/php-fpm_error.log {
	daily
	rotate 14
	nocompress
	missingok
	copytruncate
	compresscmd /usr/bin/bzip2
	compressext .bz2
}
