/var/log/a.log {
sizeX
	ifempty
}
/var/log/b.log {
 	 dailyfoo
	ifempty
}
/var/log/c.log {
		weekly # at night
	ifempty
}
/var/log/d.log {
  monthly
	ifempty
}
