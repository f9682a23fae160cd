/var/log/a.log {
	daily
	rotate 9
	delaycompress
	nodelaycompress
	compresscmd /bin/xz
	compressext .xz
	uncompresscmd /bin/unxz
	compress # yes
	compress yes
	no compress
	nonocompress
}
