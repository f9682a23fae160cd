# /var/log/old.log {
weekly
/var/log/a.log {
	rotate 5
	daily
	compress
	missingok
	copytruncate
}
