# Old stanza, switched off on 2022-11-30:
#/var/log/shop/legacy.log {
#	daily
#	rotate 3
#	postrotate
#		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
#	endscript
#}
/var/www/vhosts/system/example.com/logs/error_log {
	monthly
# the next line was asked for by accounting
	rotate 12
#	compress
	notifempty
	nocompress
	missingok
	copytruncate
}

## /var/log/shop/a.log {
##   size 10M
## }
/var/log/shop/b.log {
	missingok
	monthly
    #	rotate 5
    # daily
	rotate 12
	nocompress
	copytruncate
}

#/var/log/shop/c.log {
#}
#/var/log/shop/z.log {