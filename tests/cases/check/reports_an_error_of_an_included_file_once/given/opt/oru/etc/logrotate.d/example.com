/var/www/vhosts/system/example.com/logs/error_log {
	size=50MB
	missingok
}
