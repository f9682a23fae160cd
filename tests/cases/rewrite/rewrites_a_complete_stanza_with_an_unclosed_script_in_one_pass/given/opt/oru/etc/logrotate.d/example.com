/var/log/a.log {
	weekly
	rotate 9
	nocompress
	mail x@example.com
	postrotate
		/usr/sbin/anonymize_ip $1
}
