/var/log/a.log {
	firstaction
		weekly-report
		test ${x} = y
	endscript
	rotate 9
}
