/var/log/a.log {
	missingok
	missingok # x
	ifempty
	daily
	rotate 5
	compress
	copytruncate
}
/var/log/b.log {
	missingok
	missingoks
	daily
	rotate 5
	compress
	copytruncate
}
