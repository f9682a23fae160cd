/var/log/a.log {
	rotate 9
}
/var/log/b.log {
}
