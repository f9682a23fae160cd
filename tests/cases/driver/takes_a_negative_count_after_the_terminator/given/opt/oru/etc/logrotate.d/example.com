/srv/a.log {
  rotate  9
}
/srv/b.log {
}
