/var/log/x {
	missingok
	} daily
