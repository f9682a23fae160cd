/var/log/a.log {
  copytruncate 	
copytruncate
}
/var/log/b.log {
}
