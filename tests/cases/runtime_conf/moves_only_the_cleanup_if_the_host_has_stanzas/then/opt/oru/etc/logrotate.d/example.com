/var/www/vhosts/system/example.com/logs/error_log {
	daily
	rotate 5
	compress
	missingok
	copytruncate
}
