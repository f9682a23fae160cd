/var/log/a.log {
	daily
	ifempty
	rotate 5
	compress
	missingok
	copytruncate
}
/var/log/b.log {
	daily
	rotate 5
	compress
	missingok
	copytruncate
}
/var/log/c.log {
	daily
	rotate 5
	compress
	missingok
	copytruncate
}
