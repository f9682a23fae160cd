/var/www/vhosts/system/example.com/logs/error_log {
	daily
	rotate 9
	nocompress
	missingok
	copytruncate
}
