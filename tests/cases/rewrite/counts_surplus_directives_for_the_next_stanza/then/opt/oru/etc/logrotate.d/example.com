/var/log/a.log {
	daily
	rotate 5
	rotate 5
	compress
	compress
	mail root@example.com
	mailfirst
	mail root@example.com
	mailfirst
	missingok
	missingok
	copytruncate
}
/var/log/b.log {
	daily
	copytruncate
}
/var/log/c.log {
	daily
	rotate 5
	compress
	mail root@example.com
	mailfirst
	missingok
	copytruncate
}
