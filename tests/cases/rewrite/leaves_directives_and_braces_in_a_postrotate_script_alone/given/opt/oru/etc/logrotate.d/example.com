/var/log/a.log {
	postrotate
		weekly
		rotate 9
		nocompress
		nomissingok
		copytruncate
		mail x
		mailfirst
		postrotate
		echo /b {
	}
	endscript
	monthly
}
