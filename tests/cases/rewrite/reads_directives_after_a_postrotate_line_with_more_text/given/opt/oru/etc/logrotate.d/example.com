/var/log/a.log {
	postrotate # reload
		weekly-report
	endscript
	rotate 9
}
