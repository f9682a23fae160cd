# ÿ /x {
/var/log/ÿþé.log {
	size=10M
	dateformat -€
	compress 
	rotate 5
	compress
	missingok
	copytruncate
}
í €
