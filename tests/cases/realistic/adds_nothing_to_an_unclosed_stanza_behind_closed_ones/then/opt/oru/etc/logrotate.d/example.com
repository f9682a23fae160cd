#ATTENTION!
#
#DO NOT MODIFY THIS FILE BECAUSE IT WAS GENERATED AUTOMATICALLY,
#SO ALL YOUR CHANGES WILL BE LOST THE NEXT TIME THE FILE IS GENERATED.

allowhardlink
# the copy from the other machine ended early, see below
/var/www/vhosts/system/example.com/logs/*.processed {
	size=1048576
	rotate 3
	nocompress
	missingok
	copytruncate
	mail ops@example.com
	mailfirst
	postrotate
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
	endscript
}
/var/www/vhosts/system/example.com/logs/error_log {
	size=1048576
	rotate 3
	missingok
	postrotate
		/usr/bin/systemctl reload nginx.service
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
	endscript
	nocompress
	mail ops@example.com
	mailfirst
	copytruncate
}
# ---- here the copy ended; completed by hand ----
/var/www/vhosts/system/example.com/logs/proxy_error_log {
	notifempty
	missingok
	rotate 3
	dateext
