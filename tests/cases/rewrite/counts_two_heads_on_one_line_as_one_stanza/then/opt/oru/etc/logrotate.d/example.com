/var/log/a.log { /var/log/b.log {
	rotate 5
	daily
	compress
	missingok
	copytruncate
}
}
