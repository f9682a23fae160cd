/var/log/a.log {
	mail
	nomail
	mail=x@example.com
	mailx y
	mailfirst x
	maillast # x
	mailfirstly
	nomailfirst
	Mail x
}
