endscript
}
/var/log/a.log {
	postrotate
		one
