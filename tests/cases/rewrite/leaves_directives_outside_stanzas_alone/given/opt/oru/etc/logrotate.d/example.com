weekly
rotate 4
compress
missingok
copytruncate
mail x@example.com
mailfirst
postrotate

/var/log/a.log {
	monthly
}
	size 1k
/var/log/b.log {
}
daily
endscript
