# } /var/log/old.log {
weekly
/var/log/a.log {
