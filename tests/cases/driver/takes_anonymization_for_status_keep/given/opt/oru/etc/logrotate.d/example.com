/srv/a.log {
	daily
}
