include /etc/extra
# old stuff {
	daily
/var/log/a.log {
	rotate 5
	compress
	missingok
	copytruncate
}
