# fish completion for tavek-logrotate-check

# Defines __tavek_logrotate_hosts.
source (status dirname)/tavek-logrotate.fish

complete -c tavek-logrotate-check -f -a '(__tavek_logrotate_hosts all)'
complete -c tavek-logrotate-check -l json -d 'Print one JSON object'
complete -c tavek-logrotate-check -l config -r -F -d 'Main configuration of the log service'
complete -c tavek-logrotate-check -s h -l help -d 'Print a summary of the options'
