/var/log/a.log {
	weekly
	rotate 9
} # was /var/log/b.log {
	monthly
}
