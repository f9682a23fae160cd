/srv/a.log {
}
