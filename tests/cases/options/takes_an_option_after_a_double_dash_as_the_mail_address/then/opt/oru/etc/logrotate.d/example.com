/var/log/a.log {
	daily
	rotate 5
	compress
	mail -K
	mailfirst
	missingok
	copytruncate
}
