/var/log/a.log {
	minsize 1M
	maxsize 9M
	yearly
	hourly
	Daily
	ifempty weekly
monthly
	dail
	daily
	rotate 5
	compress
	missingok
	copytruncate
}
