# The log of the old shop is switched off:
  # /var/log/old.log {
  #   daily
  #   rotate 9
  # }

# The new one:
/var/log/new.log {
    daily
    rotate 9
    nocompress
    missingok
    su root root
}
