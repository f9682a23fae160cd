/var/log/a.log {
	weekly
	rotate 9
	rotate 8
	compress
	nocompress
	mail a
	mail b
	missingok
	nomissingok
}
/var/log/b.log {
}
/var/log/c.log {
}
