# site rules, made by hand
include /etc/oru/rotate-extra.d
# the old stanza, kept for reference
#/var/log/legacy.log {
#	daily
#	rotate 99
#}

/var/www/vhosts/system/example.com/logs/error_log {
	daily
	rotate 30
	notifempty
}
