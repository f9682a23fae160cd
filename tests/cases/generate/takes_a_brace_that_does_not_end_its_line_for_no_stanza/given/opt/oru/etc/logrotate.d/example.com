/var/log/shop.log { 
	weekly
}
/var/log/pay.log { # ours
	weekly
}
