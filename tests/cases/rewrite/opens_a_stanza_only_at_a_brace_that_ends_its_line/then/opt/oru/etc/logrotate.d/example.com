/var/log/a.log { 
	weekly
}
/var/log/b.log {	
	weekly
}
/var/log/c.log { # here
	weekly
}
/var/log/d.log {
	weekly
}
/var/log/e.log {
	daily
	rotate 5
	compress
	missingok
	copytruncate
}
