/var/log/a.log {
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
}
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
