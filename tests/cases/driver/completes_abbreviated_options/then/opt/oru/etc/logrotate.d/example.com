/var/log/a.log {
	daily
	rotate 3
	compress
	mail root@example.com
	mailfirst
	missingok
	copytruncate
	postrotate
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
	endscript
}
