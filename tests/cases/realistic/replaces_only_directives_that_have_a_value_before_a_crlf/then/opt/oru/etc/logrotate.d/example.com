# some lines were pasted from a chat window
/var/log/shop/web.log {
	weekly
	rotate 6
	compress
	mail ops@example.com
	mailfirst
	maillast
	missingok
	notifempty
	compress
	missingok
	copytruncate
}
# this one is clean
/var/log/shop/api.log {
	weekly
	rotate 6
	compress
	mail ops@example.com
	mailfirst
	missingok
	copytruncate
}
/var/log/shop/jobs.log {
	weekly
	rotate 6
    copytruncate
    nocompress
	mail ops@example.com
	mailfirst
	compress
	missingok
	copytruncate
}
