/var/log/a.log {
	compress
}
/var/log/b.log {
}
