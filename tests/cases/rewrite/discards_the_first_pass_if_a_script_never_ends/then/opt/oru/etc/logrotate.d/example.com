/var/log/a.log {
	weekly
	postrotate
		one
}
