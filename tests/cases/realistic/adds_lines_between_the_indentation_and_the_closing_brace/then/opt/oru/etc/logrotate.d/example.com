    # everything is indented because this was pasted from a playbook

    /var/log/shop/web.log {
	daily
	rotate 5
        dateext
	nocompress
        notifempty
    	mail ops@example.com
	mailfirst
	missingok
	copytruncate
	postrotate
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
	endscript
}

    /var/log/shop/api.log
    {
        # nothing special
			daily
	rotate 5
	nocompress
	mail ops@example.com
	mailfirst
	missingok
	copytruncate
	postrotate
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
	endscript
}

    /var/log/shop/jobs.log {
	daily
	missingok
        postrotate
            /usr/bin/systemctl reload shop-jobs.service
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
        endscript
    	rotate 5
	nocompress
	mail ops@example.com
	mailfirst
	copytruncate
}