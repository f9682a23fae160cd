/var/log/a.log {
	mail x@example.com
	mailfirst
	ifempty
	maillast
	mail 
}
