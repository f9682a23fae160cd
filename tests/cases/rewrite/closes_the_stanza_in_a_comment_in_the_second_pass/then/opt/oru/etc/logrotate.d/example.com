# {old	daily
	compress
	missingok
	copytruncate
}
/var/log/a.log {
	daily
	compress
	rotate 5
