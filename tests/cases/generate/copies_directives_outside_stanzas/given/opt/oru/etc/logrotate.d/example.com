monthly
size 1k
	rotate 4
compress
missingok
copytruncate
mailfirst
