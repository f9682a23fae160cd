/var/log/a.log {
 maillast 	
	mail x@example.com
	mailfirst
mail	y z # }
	mail 
mailfirst	
	ifempty
}
