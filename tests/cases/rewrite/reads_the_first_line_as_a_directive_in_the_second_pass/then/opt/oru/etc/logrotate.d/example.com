	daily
/var/log/a.log {
	rotate 5
