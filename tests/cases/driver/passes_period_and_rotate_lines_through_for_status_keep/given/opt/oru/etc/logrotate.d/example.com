/srv/a.log {
    daily
	daily # twice
  rotate 7 
	size 100k
	rotate	8
}
/srv/b.log {
rotate 2 }
}
