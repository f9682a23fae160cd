/var/log/a.log {
# keep {this	daily
	rotate 5
	compress
	missingok
	copytruncate
} short
	weekly
}
