#ATTENTION!
#
#DO NOT MODIFY THIS FILE BECAUSE IT WAS GENERATED AUTOMATICALLY,
#SO ALL YOUR CHANGES WILL BE LOST THE NEXT TIME THE FILE IS GENERATED.

allowhardlink
# the copy from the other machine ended early, see below
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
	missingok
	postrotate
		/usr/bin/systemctl reload nginx.service
	endscript
}
# ---- here the copy ended; completed by hand ----
/var/www/vhosts/system/example.com/logs/proxy_error_log {
	notifempty
	missingok
	rotate 5
	dateext
