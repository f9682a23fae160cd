/var/log/a.log {
	weekly
	postrotate
		/usr/sbin/anonymize_ip $1
		one
}
