/var/log/a.log {
	weekly
}
