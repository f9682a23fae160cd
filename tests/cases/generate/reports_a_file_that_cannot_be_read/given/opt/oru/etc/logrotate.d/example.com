# old
