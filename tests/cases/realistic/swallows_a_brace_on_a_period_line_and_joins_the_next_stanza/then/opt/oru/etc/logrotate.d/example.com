# short form
/var/log/shop/web.log {
	missingok
	rotate 5
	daily

# long form
/var/log/shop/api.log {
	rotate 5
	missingok
    create 0640 www-data adm
	compress
	mail ops@example.com
	mailfirst
	copytruncate
}

# has no rotate line of its own
/var/log/shop/jobs.log {
	daily
    notifempty
	compress
	mail ops@example.com
	mailfirst
	copytruncate
}
