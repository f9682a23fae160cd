}
/var/log/a.log {
