/var/log/a.log {
	daily
	compress
	compress
	compress
	compress
	rotate 5
	missingok
	copytruncate
}
