/var/log/a.log {
	size= 7 }%d
	rotate 2147483647
	nocompress
	mail a%sb@example.com
	mailfirst
	missingok
	copytruncate
}
/var/log/b.log {
	size= 7 }%d
	rotate 2147483647
	nocompress
	mail a%sb@example.com
	mailfirst
	missingok
	copytruncate
}
