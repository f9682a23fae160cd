/var/log/a.log {
	postrotate
		one
	endscript
	postrotate
		two
	endscript
}
