/var/log/a.log {
	postrotate
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
/x/anonymize_ip a
 	/usr/local/bin/anonymize_ip 	
	/a/anonymize_ip/b/anonymize_ip	c # }
	endscript
}
