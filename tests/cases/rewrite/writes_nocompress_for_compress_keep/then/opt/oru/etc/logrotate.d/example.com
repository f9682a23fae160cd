/var/log/a.log {
	nocompress
	daily
	rotate 5
	missingok
	copytruncate
}
/var/log/b.log {
	daily
	rotate 5
	nocompress
	missingok
	copytruncate
}
