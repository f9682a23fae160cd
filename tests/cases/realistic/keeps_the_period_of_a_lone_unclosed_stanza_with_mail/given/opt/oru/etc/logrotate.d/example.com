# Access logs only; the other stanzas were moved to the central log host.
#   -- kb, 2021-09-13
# (restored from the backup after the disk was full)

allowhardlink
dateext

/var/www/vhosts/system/example.com/logs/*.processed {
	weekly
	# one month is the rule of the house
	rotate 30
	nocompress
	delaycompress
	mail root@example.com
	maillast
	nomissingok
	notifempty
