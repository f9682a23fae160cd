# fish completion for tavek-logrotate-check

# Defines __tavek_logrotate_hosts.
source (status dirname)/tavek-logrotate.fish

complete -c tavek-logrotate-check -f -a '(__tavek_logrotate_hosts all)'
complete -c tavek-logrotate-check -l json -d 'Print one JSON object'
complete -c tavek-logrotate-check -l plugin -d 'Print one line for a monitoring program'
complete -c tavek-logrotate-check -l ignore -x -a '(__tavek_logrotate_hosts all):' -d 'Omit a kind of findings about a host'
complete -c tavek-logrotate-check -l config -r -F -d 'Main configuration of the log service'
complete -c tavek-logrotate-check -s h -l help -d 'Print a summary of the options'
