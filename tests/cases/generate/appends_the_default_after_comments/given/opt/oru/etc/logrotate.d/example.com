# kept by the administrator
#
# /var/log/shop.log {
#	weekly
# }
