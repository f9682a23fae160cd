/var/log/a.log {
	daily
	ifempty 	rotate 5
	compress
	missingok
	copytruncate
} weekly
rotate 9
}
