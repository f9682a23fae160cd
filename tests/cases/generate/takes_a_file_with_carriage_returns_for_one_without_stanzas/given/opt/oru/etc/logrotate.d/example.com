/var/log/shop.log {
	daily
	rotate 2
}
