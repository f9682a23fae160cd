/var/log/a.log {
	daily
	rotate 5
	compress
	missingok
	copytruncate
}
