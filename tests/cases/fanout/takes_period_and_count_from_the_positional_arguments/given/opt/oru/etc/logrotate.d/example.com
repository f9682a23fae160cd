/x/*.processed {
	daily
}
