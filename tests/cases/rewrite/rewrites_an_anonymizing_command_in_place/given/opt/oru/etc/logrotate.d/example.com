/var/log/a.log {
	postrotate
		one
/usr/sbin/anonymize_ip --old $1 }
		two
	endscript
}
