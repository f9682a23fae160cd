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
	daily
	rotate 5
	compress
	mail root@example.com
	mailfirst
	missingok
	copytruncate
}
