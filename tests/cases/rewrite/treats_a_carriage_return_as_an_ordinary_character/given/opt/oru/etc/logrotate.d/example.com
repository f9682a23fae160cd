/var/log/a.log {
	weekly
	rotate 9
	compress
	mail x@example.com
	mailfirst
	missingok
	copytruncate
	postrotate
		monthly
	endscript
}
