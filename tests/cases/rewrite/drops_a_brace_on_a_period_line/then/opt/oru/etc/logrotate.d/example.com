/var/log/a.log {
	size=10M
	rotate 5
	compress
	missingok
	copytruncate
}
