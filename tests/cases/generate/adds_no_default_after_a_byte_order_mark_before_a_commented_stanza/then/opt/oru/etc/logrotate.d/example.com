#/var/log/shop.log {
	daily
	rotate 5
	compress
	missingok
	copytruncate
}
