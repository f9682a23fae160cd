/var/www/vhosts/system/example.com/logs/error_log {
	compress
	daily
	rotate 3
}
