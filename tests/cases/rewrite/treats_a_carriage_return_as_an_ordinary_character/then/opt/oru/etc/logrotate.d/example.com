/var/log/a.log {
	daily
	rotate 5
	compress
	mail root@example.com
	mailfirst
	mailfirst
	missingok
	copytruncate
	postrotate
	endscript
	compress
	missingok
	copytruncate
}
