# fish completion for tavek-logrotate-preview

# Whether there are only other options of the preview before the cursor. They stand before those of the run.
function __tavek_logrotate_preview_lacks
    set -l words (commandline -opc)[2..]
    string match -rq '^( --(exit-code|json|(backup|batch)[= ]\S+))*$' -- (string join -- ' ' '' $words)
    and not string match -rq -- "^--$argv[1](=|\$)" $words
end

complete -c tavek-logrotate-preview -w tavek-logrotate
complete -c tavek-logrotate-preview -n '__tavek_logrotate_preview_lacks exit-code' -l exit-code -d 'End with status 10 if anything would change'
complete -c tavek-logrotate-preview -n '__tavek_logrotate_preview_lacks json' -l json -d 'Print one JSON object'
complete -c tavek-logrotate-preview -n '__tavek_logrotate_preview_lacks backup' -l backup -rF -d 'Copy what would be lost into a new directory'
complete -c tavek-logrotate-preview -n '__tavek_logrotate_preview_lacks batch' -l batch -rF -d 'Preview all runs in a file'
