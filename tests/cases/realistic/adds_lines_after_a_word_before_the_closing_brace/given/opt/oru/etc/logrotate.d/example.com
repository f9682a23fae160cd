/var/log/shop/web.log {
    weekly
    su root root
    missingok }

/var/log/shop/api.log {
    rotate 9
    compress }
/var/log/shop/jobs.log {
    weekly
    rotate 9
    copytruncate	# keep the inode }
