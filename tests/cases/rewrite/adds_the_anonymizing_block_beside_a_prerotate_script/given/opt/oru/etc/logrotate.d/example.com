/var/log/a.log {
	prerotate
		/usr/sbin/anonymize_ip $1
	endscript
}
