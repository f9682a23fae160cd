/var/log/a.log {
	daily
	rotate
	rotated 9
	rotate=9
	norotate 9
	Rotate 9
	ifempty rotate 9
	rotate 5
	compress
	missingok
	copytruncate
}
