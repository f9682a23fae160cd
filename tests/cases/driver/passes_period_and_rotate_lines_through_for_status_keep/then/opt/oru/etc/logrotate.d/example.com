/srv/a.log {
    daily
	daily # twice
  rotate 7 
	size 100k
	rotate	8
	nocompress
	missingok
	copytruncate
}
/srv/b.log {
rotate 2 }
	nocompress
	missingok
	copytruncate
}
