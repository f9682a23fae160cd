/var/log/a.log {
	size=10M
	ifempty
	rotate 5
	compress
	missingok
	copytruncate
}
/var/log/b.log {
	size=10M
	ifempty
	rotate 5
	compress
	missingok
	copytruncate
}
