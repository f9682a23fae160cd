/srv/a.log {
	nocompress
	delaycompress
	missingok
	copytruncate
}
