#ATTENTION!
#
#DO NOT MODIFY THIS FILE BECAUSE IT WAS GENERATED AUTOMATICALLY,
#SO ALL YOUR CHANGES WILL BE LOST THE NEXT TIME THE FILE IS GENERATED.

allowhardlink
# 2023-05-02 jk: the access logs grow fast, see the note on the wiki
/var/www/vhosts/system/example.com/logs/*.processed {
	size=10485760
	rotate 10
	compress
	missingok
	copytruncate
	minsize 1M
	maxsize 500M
}
# size limits of the error logs were lowered, too
/var/www/vhosts/system/example.com/logs/error_log {
	size 5M  # five megabytes are enough here
	# size 10M was the old limit
    rotate   10  
    compress 
	missingok
	 copytruncate	 
    maxage 90
}
/var/www/vhosts/system/example.com/logs/proxy_error_log {
    notifempty
    maxsize 64M
      size=1024k
	rotate	10
	compress
	missingok
	copytruncate
}
/var/www/vhosts/system/example.com/logs/php-fpm_error.log {
size = 2M
rotate 10
compress
missingok
copytruncate
minsize=100k
}
