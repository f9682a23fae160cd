# ÿ /x {
/var/log/ÿþé.log {
	size Ã(
	dateformat -€
	compress 
}
í €
