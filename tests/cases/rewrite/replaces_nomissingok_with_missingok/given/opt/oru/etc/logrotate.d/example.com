/var/log/a.log {
 	nomissingok 	
	missingok # x
	ifempty
}
/var/log/b.log {
missingok	
	missingoks
}
