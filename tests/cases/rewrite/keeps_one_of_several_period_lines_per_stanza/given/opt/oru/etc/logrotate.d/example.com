/var/log/a.log {
	size 1M
	ifempty
	weekly
	daily
}
/var/log/b.log {
	monthly
}
/var/log/c.log {
}
