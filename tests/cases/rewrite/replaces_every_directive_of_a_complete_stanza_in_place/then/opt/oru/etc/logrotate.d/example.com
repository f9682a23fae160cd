# by hand
/var/log/a.log /var/log/b.log {
	copytruncate
	postrotate
		/usr/bin/true
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
	endscript
	delaycompress
	missingok
	mail root@example.com
	mailfirst
	ifempty
	compress
	rotate 5
	dateext
	daily
}
