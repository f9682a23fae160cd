/var/log/shop/web.log {
	daily
	rotate 5
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
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
		/usr/bin/systemctl reload shop-api.service
	endscript
	notifempty
}

/var/log/shop/jobs.log {
	daily
	rotate 5
	missingok
	compress
	copytruncate
	postrotate
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
	endscript
}
