/var/log/a.log {
	postrotate
		one
   endscript
}
