    # everything is indented because this was pasted from a playbook

    /var/log/shop/web.log {
        daily
        rotate 14
        dateext
        compress
        notifempty
    }

    /var/log/shop/api.log
    {
        # nothing special
		}

    /var/log/shop/jobs.log {
        daily
        missingok
        postrotate
            /usr/bin/systemctl reload shop-jobs.service
        endscript
    }