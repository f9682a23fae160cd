include /etc/extra
# old stuff {
weekly
/var/log/a.log {
	monthly
}
