/var/log/a.log {
	firstaction
	daily
		test ${x	rotate 5
	compress
	missingok
	copytruncate
} = y
	endscript
	rotate 9
}
