/var/log/a.log {
	prerotate
		/usr/sbin/anonymize_ip $1
	endscript
	daily
	rotate 5
	compress
	missingok
	copytruncate
	postrotate
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
	endscript
}
