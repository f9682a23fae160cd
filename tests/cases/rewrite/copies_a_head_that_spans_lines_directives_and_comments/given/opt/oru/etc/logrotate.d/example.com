/var/log/a.log /var/log/b.log
# both } of them
weekly

"/var/log/c d.log"
{
	weekly
}
