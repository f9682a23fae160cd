# fish completion for tavek-logrotate-preview

complete -c tavek-logrotate-preview -w tavek-logrotate
complete -c tavek-logrotate-preview -n 'test (count (commandline -opc)) -eq 1' -l exit-code \
    -d 'End with status 10 if the run would change anything'
