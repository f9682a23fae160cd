# bash completion for tavek-logrotate                      -*- shell-script -*-

# The words that begin with what is typed. Unlike compgen -W this expands nothing in them.
_tavek_logrotate_words() {
    local word
    for word; do
        [[ $word == "$cur"* ]] && COMPREPLY+=("$word")
    done
}

# The hosts that have a rotation file, or any file after a slash. A host's name followed by a dot and six characters is
# a temporary file, not a host.
_tavek_logrotate_hosts() {
    local file
    if [[ $cur == /* ]]; then
        _filedir
        return
    fi
    for file in /opt/oru/etc/logrotate.d/*; do
        [[ -f $file && ! ($file == *.?????? && -e ${file%.??????}) ]] && _tavek_logrotate_words "${file##*/}"
    done
}

# A size is for the user to type.
_tavek_logrotate_periods() {
    [[ " ${words[*]} " == *[\ =]by_size\ * ]] || _tavek_logrotate_words daily weekly monthly
}

# The values of an option. Fails for an option that takes none.
_tavek_logrotate_values() {
    case $1 in
        --vhost-name) _tavek_logrotate_hosts ;;
        --on-off) _tavek_logrotate_words on off keep ;;
        --period-type) _tavek_logrotate_words by_time by_size ;;
        --period) _tavek_logrotate_periods ;;
        --compress) _tavek_logrotate_words true false ;;
        --anonymize-ip) _tavek_logrotate_words true false keep ;;
        --rot-count | --email) ;;
        *) return 1 ;;
    esac
}

# Sets `given` to the words before the cursor that are neither options nor their values, and `category` when an option
# says that the run is about system logs.
_tavek_logrotate_scan() {
    local i
    for ((i = 1; i < cword; i++)); do
        case ${words[i]} in
            --*-logs) [[ ${words[i]} == --keep-old-logs ]] || category=yes ;;
            --vhost-name | --on-off | --period-type | --period | --rot-count | --compress | --email | --anonymize-ip)
                ((++i))
                ;;
            -*) ;;
            *) given+=("${words[i]}") ;;
        esac
    done
}

# The word at the next position. Only the status "on" is followed by more.
_tavek_logrotate_position() {
    local given=() category=
    _tavek_logrotate_scan
    if [[ $category ]]; then
        _tavek_logrotate_options
    elif ((${#given[@]} < 2)) || [[ ${given[1]} == @(on|true) ]]; then
        case ${#given[@]} in
            0) _tavek_logrotate_values --vhost-name ;;
            1) _tavek_logrotate_values --on-off ;;
            2) _tavek_logrotate_values --period-type ;;
            3) _tavek_logrotate_values --period ;;
            5) _tavek_logrotate_values --compress ;;
        esac
    fi
}

_tavek_logrotate_options() {
    _tavek_logrotate_words --vhost-name --on-off --period-type --period --rot-count --compress --email --anonymize-ip \
        --system-logs --apache-logs --nginx-logs --tavek-logs --fail2ban-logs --modsecurity-logs \
        --keep-old-logs --help -K -h
}

_tavek_logrotate() {
    local cur prev words cword split
    _init_completion -s || return
    if _tavek_logrotate_values "$prev" || $split; then
        return
    elif [[ $cur == -* ]]; then
        _tavek_logrotate_options
    else
        _tavek_logrotate_position
    fi
} && complete -F _tavek_logrotate tavek-logrotate
