# some lines were pasted from a chat window
/var/log/shop/web.log {
	daily
	rotate 30
	compress
	mail root@example.com
	maillast
	missingok
	notifempty
}
# this one is clean
/var/log/shop/api.log {
	daily
	rotate 30
	compress
	mail root@example.com
	maillast
	missingok
}
/var/log/shop/jobs.log {
    size 10M
    rotate 
    copytruncate
    nocompress
    mail	
}
