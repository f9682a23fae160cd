/var/log/a.log {
	postrotate
		one
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
		two
	endscript
	daily
	rotate 5
	compress
	missingok
	copytruncate
}
