/var/{log,tmp}/a.log {
	weekly
}
