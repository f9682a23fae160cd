/var/log/shop/web.log {
	weekly
	rotate 8
	compress
	missingok
	copytruncate
	postrotate
		/usr/bin/systemctl reload nginx.service
	endscript
}

# api: same as web
/var/log/shop/api.log {
	weekly
	rotate 8
	nocompress
	missingok
	postrotate
		/usr/local/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
		/usr/bin/systemctl reload shop-api.service
	endscript
	mail api@example.com
	notifempty
}

/var/log/shop/jobs.log {
	weekly
	rotate 8
	missingok
}
