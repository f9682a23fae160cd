/var/log/a.log {
	weekly
	ifempty } weekly
rotate 9
}
