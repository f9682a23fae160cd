/var/log/a.log {
	ifempty
