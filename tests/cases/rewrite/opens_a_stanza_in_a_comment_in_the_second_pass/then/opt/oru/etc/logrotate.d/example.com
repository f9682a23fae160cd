# 	daily
	rotate 5
	compress
	missingok
	copytruncate
} /var/log/old.log {
	daily
	rotate 5
	compress
/var/log/a.log {
