/var/www/vhosts/system/example.com/logs/error_log {
	daily
	rotate 2147483646
	nocompress
	missingok
	copytruncate
}
