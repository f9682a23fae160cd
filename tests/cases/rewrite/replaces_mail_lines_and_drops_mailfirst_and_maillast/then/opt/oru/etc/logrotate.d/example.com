/var/log/a.log {
	mail root@example.com
	mailfirst
	mail root@example.com
	mailfirst
	mail root@example.com
	mailfirst
	ifempty
	daily
	rotate 5
	compress
	missingok
	copytruncate
}
