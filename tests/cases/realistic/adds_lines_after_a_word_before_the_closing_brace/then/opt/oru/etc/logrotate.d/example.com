/var/log/shop/web.log {
	size=4096
    su root root
    missingok 	rotate 5
	compress
	missingok
	copytruncate
}

/var/log/shop/api.log {
	rotate 5
    compress 	size=4096
	compress
	missingok
	copytruncate
}
/var/log/shop/jobs.log {
	size=4096
	rotate 5
    copytruncate	# keep the inode 	compress
	missingok
	copytruncate
}
