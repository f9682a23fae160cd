# cron's own log, one line is enough
/var/log/cron-extra.log { weekly rotate 2 }

# web: somebody forgot the brace
/var/log/shop/web.log {
	weekly
	# a year of weeks
	rotate 52
    nocompress
	dateext
	create 0640 www-data adm
