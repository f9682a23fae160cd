# {old}
/var/log/a.log {
	rotate 9
