/first
# {b /w {
