/var/log/a.log {
	rotate 5
	nocompress 	daily
	compress
	missingok
	copytruncate
}
