		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
endscript
	daily
	rotate 5
	compress
	mail root@example.com
	mailfirst
	missingok
	copytruncate
}
/var/log/a.log {
	daily
	rotate 5
	compress
	mail root@example.com
	mailfirst
	postrotate
		one
