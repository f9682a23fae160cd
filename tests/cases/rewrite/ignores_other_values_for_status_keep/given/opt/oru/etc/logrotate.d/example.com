/var/log/a.log {
	weekly
	rotate 9
}
