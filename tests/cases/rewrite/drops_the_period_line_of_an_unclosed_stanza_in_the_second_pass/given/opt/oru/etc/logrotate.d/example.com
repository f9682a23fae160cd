/var/log/a.log {
	weekly
	ifempty
