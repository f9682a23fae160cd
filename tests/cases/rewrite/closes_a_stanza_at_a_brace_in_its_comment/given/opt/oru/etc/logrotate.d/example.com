/var/log/a.log {
# keep {this} short
	weekly
}
