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
	weekly
}
