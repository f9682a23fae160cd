/var/www/vhosts/system/example.com/logs/error_log {
	daily
	rotate 3
	nocompress
	missingok
	copytruncate
}
