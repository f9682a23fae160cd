/var/log/a.log {
	weekly
	rotate 9
	nocompress
	missingok
	copytruncate
}
