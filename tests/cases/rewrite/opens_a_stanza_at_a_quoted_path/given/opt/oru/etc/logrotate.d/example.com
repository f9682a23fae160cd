"/var/log/my app/a.log" {
	weekly
}
