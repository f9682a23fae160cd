/var/log/a.log {
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
	daily
	rotate 5
	compress
	missingok
	copytruncate
}
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
