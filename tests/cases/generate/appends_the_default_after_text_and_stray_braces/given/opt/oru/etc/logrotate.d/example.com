}
{
see /etc/motd and /usr/share/doc
} }{ end