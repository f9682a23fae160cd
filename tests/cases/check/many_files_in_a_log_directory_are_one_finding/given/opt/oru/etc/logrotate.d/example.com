/var/www/vhosts/system/example.com/logs/* {
	daily
	missingok
}
