# The log of the old shop is switched off:
  # /var/log/old.log {
  #   daily
  #   rotate 9
  # 	weekly
	rotate 4
	compress
	missingok
	copytruncate
}

# The new one:
/var/log/new.log {
	weekly
	rotate 4
	compress
	missingok
    su root root
	copytruncate
}
