/var/www/vhosts/system/example.com/logs/error_log {
	weekly
	rotate 9
}
