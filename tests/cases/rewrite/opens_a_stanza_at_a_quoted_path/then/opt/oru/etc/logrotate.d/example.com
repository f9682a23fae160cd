"/var/log/my app/a.log" {
	daily
	rotate 5
	compress
	missingok
	copytruncate
}
