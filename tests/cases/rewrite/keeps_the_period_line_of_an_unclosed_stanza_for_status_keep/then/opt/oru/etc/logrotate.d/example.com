/var/log/a.log {
	weekly
	nocompress
