# someone switched everything off one by one
/var/www/vhosts/system/example.com/logs/*.processed {
	noshred
	noolddir
	nocreate
	nodateext
	nosharedscripts
	nodelaycompress
	compress
	missingok
	nocopytruncate
	nocopy
	nomail
	ifempty
	daily
	rotate 5
	mail ops@example.com
	mailfirst
	copytruncate
}

# and here the other way round
/var/www/vhosts/system/example.com/logs/error_log {
	nomail
	mail ops@example.com
	mailfirst
	missingok
	missingok
	nocopytruncate
	copytruncate
	compress
	rotate 5
	daily
}
# one missingok was written twice above
/var/www/vhosts/system/example.com/logs/proxy_error_log {
	notifempty
	daily
	rotate 5
	compress
	mail ops@example.com
	mailfirst
	copytruncate
}
