weekly
rotate 4
compress
missingok
copytruncate
mail x@example.com
mailfirst
postrotate

/var/log/a.log {
	daily
	rotate 5
	compress
	missingok
	copytruncate
}
	size 1k
/var/log/b.log {
	daily
	rotate 5
	compress
	missingok
	copytruncate
}
daily
endscript
