/var/log/a.log {
	postrotate
		one
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
	endscript
	postrotate
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
	endscript
	daily
	rotate 5
	compress
	missingok
	copytruncate
}
/var/log/b.log {
	postrotate
		two
	endscript
	daily
	rotate 5
	compress
	missingok
	copytruncate
}
/var/log/c.log {
	daily
	rotate 5
	compress
	missingok
	copytruncate
	postrotate
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
	endscript
}
