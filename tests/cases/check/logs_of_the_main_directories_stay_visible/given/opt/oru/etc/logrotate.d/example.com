/var/log/nginx/a.log /var/www/vhosts/system/example.com/logs/error_log {
	daily
	missingok
}
