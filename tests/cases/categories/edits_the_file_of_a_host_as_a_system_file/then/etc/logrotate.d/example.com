/var/log/x {
}
