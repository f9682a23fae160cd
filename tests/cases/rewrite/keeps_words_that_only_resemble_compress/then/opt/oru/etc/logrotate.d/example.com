/var/log/a.log {
	daily
	rotate 5
	delaycompress
	nodelaycompress
	compresscmd /bin/xz
	compressext .xz
	uncompresscmd /bin/unxz
	compress # yes
	compress yes
	no compress
	nonocompress
	compress
	missingok
	copytruncate
}
