 # /var/log/old.log {
	daily
/var/log/a.log {
	rotate 5
	compress
	missingok
	copytruncate
}
