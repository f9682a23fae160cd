/srv/a.log {
  rotate  9
	daily
	compress
	missingok
	copytruncate
}
/srv/b.log {
	daily
	compress
	missingok
	copytruncate
}
