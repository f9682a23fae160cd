/var/log/a.log {
	weekly
	nocompress
	missingok
	copytruncate
}
