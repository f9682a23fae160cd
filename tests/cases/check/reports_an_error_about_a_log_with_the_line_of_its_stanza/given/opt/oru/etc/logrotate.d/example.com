# comment
/var/www/vhosts/system/example.com/logs/error_log {
	daily
}
/var/www/vhosts/system/example.com/logs/*.processed
/var/www/vhosts/system/example.com/logs/p*error* {
	daily
	missingok
}
