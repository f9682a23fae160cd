/var/log/a.log {
	rotate 0
	weekly
	compress
	missingok
	copytruncate
}
/var/log/b.log {
	weekly
	rotate 0
	compress
	missingok
	copytruncate
}
