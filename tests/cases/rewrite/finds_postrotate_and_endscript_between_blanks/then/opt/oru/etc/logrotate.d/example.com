/var/log/a.log {
postrotate 	
		weekly
}
 	endscript  
	daily
	rotate 5
	compress
	missingok
	copytruncate
}
