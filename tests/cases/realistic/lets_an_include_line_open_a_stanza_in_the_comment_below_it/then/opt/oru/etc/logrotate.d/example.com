# site rules, made by hand
include /etc/oru/rotate-extra.d
# the old stanza, kept for reference
#/var/log/legacy.log {
#	daily
#	rotate 99
#	weekly
	rotate 8
	compress
	missingok
	copytruncate
}

/var/www/vhosts/system/example.com/logs/error_log {
	weekly
	rotate 8
	notifempty
	compress
	missingok
	copytruncate
}
