/var/log/a.log {
	postrotate # reload
	daily
	endscript
	rotate 5
	compress
	missingok
	copytruncate
}
