# Three stanzas the panel must not touch, and two that it may.
/var/log/shop/web.log { # the web server
	weekly
	rotate 9
	missingok
}

/var/log/shop/api.log {  
	monthly
	rotate 9
	missingok
	mail api@example.com
}

/var/log/shop/jobs.log {
	weekly
	rotate 9
	missingok
	postrotate
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
	endscript
}

/var/log/shop/queue.log {	missingok
	size 2M
	rotate 9
	postrotate
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
	endscript
}
/var/log/shop/cache.log {
	size 2M
	rotate 9
}
