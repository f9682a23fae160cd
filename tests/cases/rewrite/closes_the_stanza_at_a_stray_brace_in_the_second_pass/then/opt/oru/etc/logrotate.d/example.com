	rotate 5
	compress
	missingok
	copytruncate
}
/var/log/a.log {
	rotate 5
	compress
	daily
