/var/log/a.log {
	rotate 9
	nocompress
	mail x@example.com
	weekly