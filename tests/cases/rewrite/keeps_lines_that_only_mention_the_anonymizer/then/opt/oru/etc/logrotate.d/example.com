/var/log/a.log {
	postrotate
		/anonymize_ip a
		/opt/oru/admin/sbin/anonymize_ip
		/usr/bin/env /x/anonymize_ip a
		sh /x/anonymize_ip a
		/x/anonymize_ips a
		x/anonymize_ip a
		/x/anonymize_ip;y z
		"/x/anonymize_ip" a
		/x/anonymize_ip-2 /y/anonymize_ip a
		# /x/anonymize_ip a
	endscript
	daily
	rotate 5
	compress
	missingok
	copytruncate
}
