/var/log/{a,b}.log {
	weekly
}
