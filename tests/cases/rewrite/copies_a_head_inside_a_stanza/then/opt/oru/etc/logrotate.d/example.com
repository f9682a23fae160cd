/var/log/a.log {
	rotate 5
/var/log/b.log {
	daily
	compress
	missingok
	copytruncate
}
	rotate 7
}
