/var/log/a.log {
	weekly
	compress
