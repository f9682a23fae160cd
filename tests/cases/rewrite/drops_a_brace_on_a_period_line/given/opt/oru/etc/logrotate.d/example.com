/var/log/a.log {
	daily }
	rotate 9
}
