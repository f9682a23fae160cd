/var/log/a.log {
	daily
	rotate 5
	compress
	postrotate
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
}
