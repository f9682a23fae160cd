/srv/a.log {
	compress
	mail ops@example.com
	mailfirst
	delaycompress
  nomissingok
}
