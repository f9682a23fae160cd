/var/log/a.log {
	postrotate
		one
	endscript
	postrotate
		/usr/sbin/anonymize_ip $1
	endscript
}
/var/log/b.log {
	postrotate
		two
	endscript
}
/var/log/c.log {
}
