/var/log/a.log {
	rotate 9 }
	mail x@example.com }
	nocompress }
