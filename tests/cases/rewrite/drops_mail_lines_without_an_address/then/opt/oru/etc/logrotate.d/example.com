/var/log/a.log {
	ifempty
	daily
	rotate 5
	compress
	missingok
	copytruncate
}
