/var/log/a.log {
	nocopytruncate
	copytruncate # x
	copytruncates
	daily
	rotate 5
	compress
	missingok
	copytruncate
}
