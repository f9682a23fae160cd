logs/a.log {
	weekly
}
