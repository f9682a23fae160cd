# Where the panel looks for its administrative tools.
install(TARGETS tavek-logrotate RUNTIME DESTINATION /opt/oru/admin/sbin)
