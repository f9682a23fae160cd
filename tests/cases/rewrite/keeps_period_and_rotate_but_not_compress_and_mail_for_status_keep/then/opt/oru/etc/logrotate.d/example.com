/var/log/a.log {
	monthly
 rotate	9 # x
	nocompress
	missingok
	copytruncate
}
/var/log/b.log {
	nocompress
	missingok
	copytruncate
}
