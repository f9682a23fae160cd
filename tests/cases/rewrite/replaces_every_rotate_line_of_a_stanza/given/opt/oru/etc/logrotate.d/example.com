/var/log/a.log {
	daily
	rotate 9
rotate	9
 	rotate  
	rotate 9 # weeks
	rotate nine
}
