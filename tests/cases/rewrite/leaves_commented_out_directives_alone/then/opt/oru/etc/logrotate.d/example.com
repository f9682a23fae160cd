/var/log/a.log {
# weekly
#rotate 9
	# nocompress
#missingok
	#copytruncate
	daily
	rotate 5
	compress
	missingok
	copytruncate
}
