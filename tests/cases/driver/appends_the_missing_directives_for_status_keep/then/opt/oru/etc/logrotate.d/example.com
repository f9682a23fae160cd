/srv/a.log {
	nocompress
	missingok
	copytruncate
}
