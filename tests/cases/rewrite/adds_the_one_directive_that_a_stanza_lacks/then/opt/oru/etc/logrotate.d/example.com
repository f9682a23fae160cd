/var/log/1.log {
	rotate 5
	compress
	mail root@example.com
	mailfirst
	missingok
	copytruncate
	postrotate
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
	endscript
	daily
}
/var/log/2.log {
	daily
	compress
	mail root@example.com
	mailfirst
	missingok
	copytruncate
	postrotate
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
	endscript
	rotate 5
}
/var/log/3.log {
	daily
	rotate 5
	mail root@example.com
	mailfirst
	missingok
	copytruncate
	postrotate
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
	endscript
	compress
}
/var/log/4.log {
	daily
	rotate 5
	compress
	missingok
	copytruncate
	postrotate
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
	endscript
	mail root@example.com
	mailfirst
}
/var/log/5.log {
	daily
	rotate 5
	compress
	mail root@example.com
	mailfirst
	copytruncate
	postrotate
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
	endscript
	missingok
}
/var/log/6.log {
	daily
	rotate 5
	compress
	mail root@example.com
	mailfirst
	missingok
	postrotate
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
	endscript
	copytruncate
}
/var/log/7.log {
	daily
	rotate 5
	compress
	mail root@example.com
	mailfirst
	missingok
	copytruncate
	postrotate
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
	endscript
}
