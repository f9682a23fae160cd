/var/www/vhosts/system/example.com/logs/error_log {
	daily
	rotate 0
	nocompress
	missingok
	copytruncate
}
