/var/log/a.log {
	weekly
	nocompress
	missingok
	copytruncate
	postrotate
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
	endscript
}
