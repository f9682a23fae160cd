/var/log/a.log {
	weekly
	rotate 9
	nocompress
	mail x@example.com
	ifempty
