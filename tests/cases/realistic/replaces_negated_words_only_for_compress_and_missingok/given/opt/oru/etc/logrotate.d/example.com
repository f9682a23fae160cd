# someone switched everything off one by one
/var/www/vhosts/system/example.com/logs/*.processed {
	noshred
	noolddir
	nocreate
	nodateext
	nosharedscripts
	nodelaycompress
	nocompress
	nomissingok
	nocopytruncate
	nocopy
	nomail
	ifempty
}

# and here the other way round
/var/www/vhosts/system/example.com/logs/error_log {
	nomail
	mail other@example.com
	nomissingok
	missingok
	nocopytruncate
	copytruncate
	nocompress
	rotate 0
}
# one missingok was written twice above
/var/www/vhosts/system/example.com/logs/proxy_error_log {
	notifempty
}
