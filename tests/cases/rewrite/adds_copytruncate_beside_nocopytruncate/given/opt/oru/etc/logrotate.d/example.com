/var/log/a.log {
	nocopytruncate
	copytruncate # x
	copytruncates
}
