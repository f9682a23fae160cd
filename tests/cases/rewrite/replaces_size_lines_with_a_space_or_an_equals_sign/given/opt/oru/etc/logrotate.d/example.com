/var/log/a.log {
	size 100k
	ifempty
}
/var/log/b.log {
	size=100k
	ifempty
}
