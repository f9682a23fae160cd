/var/log/1.log {
	rotate 9
	nocompress
	mail x@example.com
	nomissingok
	copytruncate
	postrotate
		/usr/sbin/anonymize_ip $1
	endscript
}
/var/log/2.log {
	weekly
	nocompress
	mail x@example.com
	nomissingok
	copytruncate
	postrotate
		/usr/sbin/anonymize_ip $1
	endscript
}
/var/log/3.log {
	weekly
	rotate 9
	mail x@example.com
	nomissingok
	copytruncate
	postrotate
		/usr/sbin/anonymize_ip $1
	endscript
}
/var/log/4.log {
	weekly
	rotate 9
	nocompress
	nomissingok
	copytruncate
	postrotate
		/usr/sbin/anonymize_ip $1
	endscript
}
/var/log/5.log {
	weekly
	rotate 9
	nocompress
	mail x@example.com
	copytruncate
	postrotate
		/usr/sbin/anonymize_ip $1
	endscript
}
/var/log/6.log {
	weekly
	rotate 9
	nocompress
	mail x@example.com
	nomissingok
	postrotate
		/usr/sbin/anonymize_ip $1
	endscript
}
/var/log/7.log {
	weekly
	rotate 9
	nocompress
	mail x@example.com
	nomissingok
	copytruncate
}
