#ATTENTION!
#
#DO NOT MODIFY THIS FILE BECAUSE IT WAS GENERATED AUTOMATICALLY,
#SO ALL YOUR CHANGES WILL BE LOST THE NEXT TIME THE FILE IS GENERATED.

allowhardlink
/var/www/vhosts/system/example.com/logs/*.processed {
	daily
	rotate 10
	compress
	missingok
	copytruncate
	# while we hunt the bot, see mail of 3 May
	rotate 10
	compress
}
/var/www/vhosts/system/example.com/logs/error_log {
	daily
	rotate 10
	compress
	missingok
	copytruncate
}
# no copies of these, please
/var/www/vhosts/system/example.com/logs/proxy_error_log {
	notifempty
	daily
	missingok
	copytruncate
}
