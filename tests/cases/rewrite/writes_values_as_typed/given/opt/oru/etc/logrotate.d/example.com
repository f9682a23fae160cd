/var/log/a.log {
	daily
	rotate 1
	compress
	mail x
	missingok
	copytruncate
}
/var/log/b.log {
}
