/var/log/a.log {
}

/var/log/b.log {

}
