/var/log/a.log {
	postrotate
	endscript # no
	echo endscript
	endscripts
	endscript
	weekly
	endscript
	daily
	rotate 5
	compress
	missingok
	copytruncate
}
