#ATTENTION!
#
#DO NOT MODIFY THIS FILE BECAUSE IT WAS GENERATED AUTOMATICALLY,
#SO ALL YOUR CHANGES WILL BE LOST THE NEXT TIME THE FILE IS GENERATED.

allowhardlink
/var/www/vhosts/system/example.com/logs/*.processed {
	weekly
	rotate 4
	compress
	missingok
	copytruncate
	postrotate
		reopen() {
			kill -USR1 "$(cat /run/nginx.pid)"
		}
		for log in $*; do { echo "${log}"; } >> /var/log/shop/rotated.txt; done
		awk '{ print $1 }' "$1" | sort | uniq -c > /tmp/top
		mail -s "weekly report" root < /tmp/top
		cat > /tmp/example <<END
/var/log/other.log {
	daily
	rotate 1
	nocompress
	nomissingok
	mailfirst
	size 1k
}
END
		size=$(stat -c %s "$1")
		postrotate
#	endscript
		/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*
	endscript
}

/var/www/vhosts/system/example.com/logs/error_log {
	weekly
	rotate 30
	postrotate
		reopen
	endscript
	compress
	missingok
	copytruncate
}
