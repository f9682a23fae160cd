  # /var/log/shop.log {
	weekly
}
