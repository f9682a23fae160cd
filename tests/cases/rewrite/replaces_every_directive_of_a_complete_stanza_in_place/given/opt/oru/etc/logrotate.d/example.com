# by hand
/var/log/a.log /var/log/b.log {
	copytruncate
	postrotate
		/usr/bin/true
		/usr/local/sbin/anonymize_ip $1
	endscript
	delaycompress
	missingok
	maillast
	mail old@example.com
	ifempty
	nocompress
	rotate 9
	dateext
	weekly
}
