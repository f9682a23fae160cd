/var/log/a.log {
	daily
	nocompress
  nocompress 	
compress	
	 compress
}
