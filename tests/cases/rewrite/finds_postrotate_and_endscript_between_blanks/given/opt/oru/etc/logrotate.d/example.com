/var/log/a.log {
postrotate 	
		weekly
}
 	endscript  
	monthly
}
