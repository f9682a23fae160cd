#
# by hand