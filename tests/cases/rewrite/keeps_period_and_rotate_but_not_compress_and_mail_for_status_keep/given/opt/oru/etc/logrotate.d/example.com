/var/log/a.log {
	monthly
 rotate	9 # x
	compress
	mail x@example.com
	maillast
	nomissingok
	copytruncate
}
/var/log/b.log {
}
