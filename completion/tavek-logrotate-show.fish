# fish completion for tavek-logrotate-show

# Defines __tavek_logrotate_hosts and __tavek_logrotate_values.
source (status dirname)/tavek-logrotate.fish

# Whether the line contains --commands, after which settings are offered as well.
function __tavek_logrotate_show_settings
    contains -- --commands (commandline -opc)
end

complete -c tavek-logrotate-show -f -a '(__tavek_logrotate_hosts all)'
complete -c tavek-logrotate-show -l commands -d 'Print the commands that make the settings'
complete -c tavek-logrotate-show -l json -d 'Print one JSON object'
complete -c tavek-logrotate-show -l system-logs -d 'All categories of system logs'
for category in apache nginx tavek fail2ban modsecurity
    complete -c tavek-logrotate-show -l $category-logs -d 'This category of system logs'
end
for setting in period-type period compress anonymize-ip
    complete -c tavek-logrotate-show -n __tavek_logrotate_show_settings -l $setting -x -a "(__tavek_logrotate_values $setting)"
end
complete -c tavek-logrotate-show -n __tavek_logrotate_show_settings -l rot-count -x -d 'Number of rotated copies'
complete -c tavek-logrotate-show -n __tavek_logrotate_show_settings -l email -x -d 'Address to mail rotated logs to'
complete -c tavek-logrotate-show -s h -l help -d 'Print a summary of the options'
