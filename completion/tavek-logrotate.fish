# fish completion for tavek-logrotate

# Whether the host has a rotation file. A host's name followed by a dot and six characters is a temporary file.
function __tavek_logrotate_has_file
    set -l file /opt/oru/etc/logrotate.d/$argv[1]
    string match -q '/*' -- $argv[1]; and set file $argv[1]
    set -l host (string replace -r '\.[^./]{6}$' '' -- $file)
    test -f $file; and not test $host != $file -a -e $host
end

# Reads the words before the cursor and prints the job, the host, the status, the period type, the number of values given
# by position, and the options.
function __tavek_logrotate_scan
    set -l positions vhost-name on-off period-type period rot-count compress email
    set -l words (commandline -opc)[2..]
    set -l job; set -l host; set -l rotation; set -l period_type; set -l used; set -l given 0
    while set -q words[1]
        set -l option
        set -l value
        switch $words[1]
            case '--*=*'
                string match -rq -- '^--(?<option>[^=]*)=(?<value>.*)$' $words[1]
            case --vhost-name --on-off --period-type --period --rot-count --compress --email --anonymize-ip --backup --batch
                # The option whose value is being typed is not complete yet.
                set -q words[2]; or break
                set option (string sub -s 3 -- $words[1])
                set value $words[2]
                set -e words[1]
            case -K
                set option keep-old-logs
            case -h
                set option help
            case '--*'
                set option (string sub -s 3 -- $words[1])
            case '*'
                set given (math $given + 1)
                set option $positions[$given]
                set value $words[1]
                test -n "$job"; or set job host
        end
        set -e words[1]
        set -a used $option
        switch "$option"
            case vhost-name
                set host $value
            case on-off
                set rotation $value
            case period-type
                set period_type $value
        end
        switch "$option"
            case system-logs
                set job system
            case keep-old-logs
            case help batch
                set job none
            case '*-logs'
                test -n "$job"; or set job category
            case on-off compress email
                test -n "$job"; or set job host
        end
    end
    printf '%s\n' "$job" "$host" "$rotation" "$period_type" $given $used
end

# Whether the chosen job uses the option and the line does not contain it yet.
function __tavek_logrotate_uses
    set -l scan (__tavek_logrotate_scan)
    set -l job $scan[1]
    set -l used $scan[6..]
    set -l uses vhost-name period-type period rot-count anonymize-ip
    switch "$job"
        case none
            set uses
        case system
            set -e uses[1]
        case category
            set -a uses keep-old-logs
        case '*'
            switch "$scan[3]"
                case off false
                    set uses vhost-name
                case keep
                    set uses vhost-name anonymize-ip
                case '*'
                    set -a uses on-off compress email keep-old-logs
            end
            if test -z "$job"
                set -a uses apache-logs nginx-logs tavek-logs fail2ban-logs modsecurity-logs help
                # The run for all categories would ignore -K and a host.
                contains keep-old-logs $used; or contains vhost-name $used; or set -a uses system-logs
            end
    end
    contains -- $argv[1] $uses; and not contains -- $argv[1] $used
end

# The hosts that have a rotation file, for "on" and with the argument "all" also those that have only a folder, or any file
# after a slash.
function __tavek_logrotate_hosts
    if string match -rq '^(--vhost-name=)?/' -- (commandline -ct)
        __fish_complete_path (string replace -- --vhost-name= '' (commandline -ct))
        return
    end
    for file in /opt/oru/etc/logrotate.d/*
        set -l name (path basename $file)
        __tavek_logrotate_has_file $name; and printf '%s\thost with a rotation file\n' $name
    end
    test "$argv" = all; or contains -- (__tavek_logrotate_scan)[3] '' on true; or return
    set -l key '^\s*HTTPD_VHOSTS_D\s+([^#]*[^#\s]).*'
    # fish itself would complain about a redirection from a missing file.
    set -l vhosts (cat /etc/oru/oru.conf 2>/dev/null | string replace -rf $key '$1')
    set -q vhosts[1]; or set vhosts /var/www/vhosts
    for folder in $vhosts[-1]/system/*/
        set -l name (path basename $folder)
        __tavek_logrotate_has_file $name; or printf '%s\thost without a rotation file\n' $name
    end
end

# Only a host with a file can be switched off.
function __tavek_logrotate_states
    set -l host (__tavek_logrotate_scan)[2]
    printf 'on\trotate the logs and write the file\n'
    if test -z "$host"; or __tavek_logrotate_has_file $host
        printf '%s\t%s\n' off 'remove the file and forget its settings' \
            keep 'write the file without compression and mail address'
    end
end

# The values of an option. A size, a count and an address are for the user to type.
function __tavek_logrotate_values
    switch $argv[1]
        case vhost-name
            __tavek_logrotate_hosts
        case on-off
            __tavek_logrotate_states
        case period-type
            printf '%s\t%s\n' by_time 'rotate daily, weekly or monthly' by_size 'rotate when the log is larger than a size'
        case period
            test (__tavek_logrotate_scan)[4] = by_size; or printf '%s\n' daily weekly monthly
        case compress
            printf '%s\t%s\n' true 'compress rotated logs' false 'do not compress rotated logs'
        case anonymize-ip
            printf '%s\t%s\n' true 'anonymize logs at future rotations' false 'do not anonymize logs any more' \
                keep 'change nothing'
    end
end

# The word at the next position. Only the status "on" is followed by more.
function __tavek_logrotate_position
    set -l positions vhost-name on-off period-type period rot-count compress email
    set -l scan (__tavek_logrotate_scan)
    contains -- "$scan[1]" '' host; or return
    set -l option $positions[(math $scan[5] + 1)]
    test -n "$option"; and not contains -- $option $scan[6..]; or return
    test $scan[5] -lt 2; or contains -- "$scan[3]" on true; or return
    __tavek_logrotate_values $option
end

complete -c tavek-logrotate -f -a '(__tavek_logrotate_position)'
complete -c tavek-logrotate -n '__tavek_logrotate_uses vhost-name' -l vhost-name -x \
    -a '(__tavek_logrotate_values vhost-name)' -d 'Host, or path of a rotation file'
complete -c tavek-logrotate -n '__tavek_logrotate_uses on-off' -l on-off -x \
    -a '(__tavek_logrotate_values on-off)' -d 'Status of the rotation'
complete -c tavek-logrotate -n '__tavek_logrotate_uses period-type' -l period-type -x \
    -a '(__tavek_logrotate_values period-type)' -d 'Whether the period is a time or a size'
complete -c tavek-logrotate -n '__tavek_logrotate_uses period' -l period -x \
    -a '(__tavek_logrotate_values period)' -d 'Period of the rotation'
complete -c tavek-logrotate -n '__tavek_logrotate_uses rot-count' -l rot-count -x \
    -d 'Copies with a higher number are deleted, without this option all'
complete -c tavek-logrotate -n '__tavek_logrotate_uses compress' -l compress -x \
    -a '(__tavek_logrotate_values compress)' -d 'Whether rotated logs are compressed'
complete -c tavek-logrotate -n '__tavek_logrotate_uses email' -l email -x -d 'Address to mail rotated logs to'
complete -c tavek-logrotate -n '__tavek_logrotate_uses anonymize-ip' -l anonymize-ip -x \
    -a '(__tavek_logrotate_values anonymize-ip)' -d 'Whether addresses are anonymized'
complete -c tavek-logrotate -n '__tavek_logrotate_uses system-logs' -l system-logs \
    -d 'All categories; without a count all copies are deleted'
complete -c tavek-logrotate -n '__tavek_logrotate_uses apache-logs' -l apache-logs -d "Rewrite the file of the web server's logs"
complete -c tavek-logrotate -n '__tavek_logrotate_uses nginx-logs' -l nginx-logs -d "Rewrite the file of the proxy's logs"
complete -c tavek-logrotate -n '__tavek_logrotate_uses tavek-logs' -l tavek-logs -d "Rewrite the panel's own file"
complete -c tavek-logrotate -n '__tavek_logrotate_uses fail2ban-logs' -l fail2ban-logs -d "Rewrite the file of fail2ban's log"
complete -c tavek-logrotate -n '__tavek_logrotate_uses modsecurity-logs' -l modsecurity-logs \
    -d "Rewrite the file of ModSecurity's log"
complete -c tavek-logrotate -n '__tavek_logrotate_uses keep-old-logs' -s K -l keep-old-logs \
    -d 'Delete no rotated copies in this run'
complete -c tavek-logrotate -n '__tavek_logrotate_uses help' -s h -l help -d 'Print a summary of the options'
