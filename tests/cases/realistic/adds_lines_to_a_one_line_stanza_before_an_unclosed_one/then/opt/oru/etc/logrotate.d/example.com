# cron's own log, one line is enough
/var/log/cron-extra.log { weekly rotate 2 	mail ops@example.com
	mailfirst
	missingok
	copytruncate
	postrotate
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
	endscript
}

# web: somebody forgot the brace
/var/log/shop/web.log {
	mail ops@example.com
	mailfirst
	monthly
	# a year of weeks
	rotate 6
	compress
	dateext
	create 0640 www-data adm
