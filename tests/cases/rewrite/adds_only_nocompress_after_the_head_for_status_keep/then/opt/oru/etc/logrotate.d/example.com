	nocompress
	missingok
	copytruncate
}
/var/log/a.log {
	nocompress
