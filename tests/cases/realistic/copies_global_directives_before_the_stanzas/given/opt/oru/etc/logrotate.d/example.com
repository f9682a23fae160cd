# global part: holds for the included files, too
monthly
rotate 4
nocompress
missingok
create 0640 root adm
dateext
tabooext + .disabled .orig
compresscmd /usr/bin/xz
compressext .xz
mail root@example.com
maillast
include /etc/oru/rotate-extra.d

# the host's own logs
/var/www/vhosts/system/example.com/logs/*.processed {
	daily
	rotate 30
	nocompress
	missingok
	copytruncate
}

size 100M

/var/www/vhosts/system/example.com/logs/error_log {
	delaycompress
}
rotate 1
daily
