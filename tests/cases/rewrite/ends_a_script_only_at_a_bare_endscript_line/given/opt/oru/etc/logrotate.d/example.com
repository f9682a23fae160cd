/var/log/a.log {
	postrotate
	endscript # no
	echo endscript
	endscripts
	endscript
	weekly
	endscript
	monthly
}
