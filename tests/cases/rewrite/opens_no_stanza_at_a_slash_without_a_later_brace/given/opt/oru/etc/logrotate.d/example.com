include /etc/logrotate.d/other
