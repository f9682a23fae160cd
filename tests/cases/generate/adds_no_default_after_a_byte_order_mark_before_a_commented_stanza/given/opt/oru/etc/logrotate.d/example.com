#/var/log/shop.log {
	monthly
}
