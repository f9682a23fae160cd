/var/log/a.log {
	copytruncate
	copytruncate
	daily
	rotate 5
	compress
	missingok
}
/var/log/b.log {
	daily
	rotate 5
	compress
	missingok
	copytruncate
}
