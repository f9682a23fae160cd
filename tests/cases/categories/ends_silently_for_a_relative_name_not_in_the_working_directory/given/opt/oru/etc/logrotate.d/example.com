/var/log/apache2/*.log {
	rotate 4
}
