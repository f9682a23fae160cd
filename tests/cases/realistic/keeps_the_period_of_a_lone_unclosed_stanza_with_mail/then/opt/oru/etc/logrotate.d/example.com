# Access logs only; the other stanzas were moved to the central log host.
#   -- kb, 2021-09-13
# (restored from the backup after the disk was full)

allowhardlink
dateext

/var/www/vhosts/system/example.com/logs/*.processed {
	daily
	# one month is the rule of the house
	rotate 7
	compress
	delaycompress
	mail ops@example.com
	mailfirst
	missingok
	notifempty
