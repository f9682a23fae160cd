/var/log/a.log {
	rotate 5
	compress
	mail root@example.com
	mailfirst
	weekly