# short form
/var/log/shop/web.log {
    missingok
    rotate 9
    weekly }

# long form
/var/log/shop/api.log {
    weekly
    rotate 9
    missingok
    create 0640 www-data adm
}

# has no rotate line of its own
/var/log/shop/jobs.log {
    weekly
    notifempty
}
