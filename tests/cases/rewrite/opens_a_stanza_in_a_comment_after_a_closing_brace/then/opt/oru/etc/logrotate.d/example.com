/var/log/a.log {
	daily
	rotate 5
	compress
	missingok
	copytruncate
} # was /var/log/b.log {
	daily
	rotate 5
	compress
	missingok
	copytruncate
}
