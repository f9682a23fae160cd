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
	ifempty
	rotate 5
	compress
	missingok
	copytruncate
}
/var/log/c.log {
	daily
	ifempty
	rotate 5
	compress
	missingok
	copytruncate
}
/var/log/d.log {
	daily
	ifempty
	rotate 5
	compress
	missingok
	copytruncate
}
