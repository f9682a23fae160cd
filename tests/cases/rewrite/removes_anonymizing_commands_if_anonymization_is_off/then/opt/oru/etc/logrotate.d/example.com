/var/log/a.log {
	postrotate
	endscript
	daily
	rotate 5
	compress
	missingok
	copytruncate
}
