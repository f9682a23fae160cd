# bash completion for tavek-logrotate, its view of the settings, its preview and its check   -*- shell-script -*-

# Adds the words that begin with what is typed, quoted in the same way. Unlike compgen -W this expands nothing in them.
# Readline keeps an opening quote, so the replies do not contain it.
_tavek_logrotate_words() {
    local word quoted
    for word; do
        case $cur in
            \'*) quoted="'${word//"'"/"'\''"}" ;;
            \"*)
                quoted=${word//\\/\\\\}
                quoted=${quoted//'"'/'\"'}
                quoted=${quoted//'$'/'\$'}
                quoted="\"${quoted//'`'/'\`'}"
                ;;
            *) printf -v quoted %q "$word" ;;
        esac
        [[ $quoted == "$cur"* ]] && COMPREPLY+=("${quoted#[\'\"]}")
    done
}

# Whether the host has a rotation file. A host's name followed by a dot and six characters is a temporary file.
_tavek_logrotate_has_file() {
    local file=/opt/oru/etc/logrotate.d/$1
    [[ $1 != /* ]] || file=$1
    [[ -f $file && ! ($file == *.?????? && -e ${file%.??????}) ]]
}

# The hosts that have a rotation file, for "on" also those that have only a folder, or any file after a slash.
_tavek_logrotate_hosts() {
    local path name vhosts
    if [[ $cur == ?([\'\"])/* ]]; then
        _filedir
        return
    fi
    for path in /opt/oru/etc/logrotate.d/*; do
        _tavek_logrotate_has_file "${path##*/}" && _tavek_logrotate_words "${path##*/}"
    done
    [[ $status == @(|on|true) ]] || return
    vhosts=$(sed -nE 's/^\s*HTTPD_VHOSTS_D\s+([^#]*[^#[:space:]]).*/\1/p' /etc/oru/oru.conf 2>/dev/null | tail -n 1)
    for path in "${vhosts:-/var/www/vhosts}"/system/*/; do
        name=${path%/}
        name=${name##*/}
        [[ -d $path ]] && ! _tavek_logrotate_has_file "$name" && _tavek_logrotate_words "$name"
    done
}

# Only a host with a file can be switched off.
_tavek_logrotate_states() {
    if [[ ! $host ]] || _tavek_logrotate_has_file "$host"; then
        _tavek_logrotate_words on off keep
    else
        _tavek_logrotate_words on
    fi
}

# The values of an option. Fails for an option that takes none. A size, a count and an address are for the user to type.
_tavek_logrotate_values() {
    case $1 in
        --vhost-name) _tavek_logrotate_hosts ;;
        --backup) _filedir -d ;;
        --batch) _filedir ;;
        --on-off) _tavek_logrotate_states ;;
        --period-type) _tavek_logrotate_words by_time by_size ;;
        --period) [[ $period_type == by_size ]] || _tavek_logrotate_words daily weekly monthly ;;
        --compress) _tavek_logrotate_words true false ;;
        --anonymize-ip) _tavek_logrotate_words true false keep ;;
        --rot-count | --email) ;;
        *) return 1 ;;
    esac
}

# Notes an option and its value.
_tavek_logrotate_note() {
    used+="$1 "
    case $1 in
        --vhost-name) host=$2 ;;
        --on-off) status=$2 ;;
        --period-type) period_type=$2 ;;
    esac
    case $1 in
        --system-logs) job=system ;;
        --keep-old-logs | -K) used+='--keep-old-logs -K ' ;;
        --help | -h | --batch) job=none ;;
        --*-logs) job=${job:-category} ;;
        --on-off | --compress | --email) job=${job:-host} ;;
    esac
}

# Reads the words before the cursor.
_tavek_logrotate_scan() {
    local i word
    for ((i = 1; i < cword; i++)); do
        word=${words[i]}
        case $word in
            --*=*) _tavek_logrotate_note "${word%%=*}" "${word#*=}" ;;
            --vhost-name | --on-off | --period-type | --period | --rot-count | --compress | --email | --anonymize-ip | --backup | --batch)
                # The option whose value is being typed is not complete yet.
                ((++i < cword)) && _tavek_logrotate_note "$word" "${words[i]}"
                ;;
            -?*) _tavek_logrotate_note "$word" ;;
            *)
                _tavek_logrotate_note "${positions[given]}" "$word"
                job=${job:-host}
                ((++given))
                ;;
        esac
    done
}

# The options that the chosen job uses and the line does not contain yet.
_tavek_logrotate_options() {
    local option uses='--vhost-name --period-type --period --rot-count --anonymize-ip'
    case $job in
        none) uses= ;;
        system) uses=${uses#* } ;;
        category) uses+=' --keep-old-logs -K' ;;
        *)
            case $status in
                off | false) uses='--vhost-name' ;;
                keep) uses='--vhost-name --anonymize-ip' ;;
                *) uses+=' --on-off --compress --email --keep-old-logs -K' ;;
            esac
            [[ $job ]] || uses+=' --apache-logs --nginx-logs --tavek-logs --fail2ban-logs --modsecurity-logs --help -h'
            # The run for all categories would ignore -K and a host.
            [[ $job || " $used" == *\ @(-K|--vhost-name)\ * ]] || uses+=' --system-logs'
            ;;
    esac
    # The options of the preview stand before those of the run.
    if [[ ${words[0]} == *-preview && " $used" =~ ^\ (--(exit-code|json|backup|batch)\ )*$ ]]; then
        uses+=' --exit-code --json --backup --batch'
    fi
    for option in $uses; do
        [[ " $used" == *" $option "* ]] || _tavek_logrotate_words "$option"
    done
}

# The word at the next position. Only the status "on" is followed by more.
_tavek_logrotate_position() {
    local position=${positions[given]}
    if [[ $job == @(system|category) ]]; then
        _tavek_logrotate_options
    elif [[ $job != none && $position && " $used" != *" $position "* ]]; then
        ((given < 2)) || [[ $status == @(on|true) ]] && _tavek_logrotate_values "$position"
    fi
}

_tavek_logrotate() {
    local cur prev words cword split
    local positions=(--vhost-name --on-off --period-type --period --rot-count --compress --email)
    local given=0 used='' job='' host='' status='' period_type=''
    _init_completion -s || return
    _tavek_logrotate_scan
    if _tavek_logrotate_values "$prev" || $split; then
        return
    elif [[ $cur == -* ]]; then
        _tavek_logrotate_options
    else
        _tavek_logrotate_position
    fi
} && complete -F _tavek_logrotate tavek-logrotate tavek-logrotate-preview

_tavek_logrotate_check() {
    local cur prev words cword split status=''
    _init_completion -s || return
    if [[ $prev == --config ]]; then
        _filedir
    elif [[ $cur == -* ]]; then
        _tavek_logrotate_words --json --plugin --config --ignore --help -h
    else
        _tavek_logrotate_hosts
    fi
} && complete -F _tavek_logrotate_check tavek-logrotate-check

# After --commands, settings are offered as well.
_tavek_logrotate_show() {
    local cur prev words cword split status='' period_type='' used=''
    _init_completion -s || return
    if [[ $prev == --@(period-type|period|rot-count|compress|email|anonymize-ip) ]]; then
        _tavek_logrotate_values "$prev"
    elif [[ $cur == -* ]]; then
        [[ " ${words[*]:1:cword-1} " == *" --commands "* ]] &&
            _tavek_logrotate_words --period-type --period --rot-count --compress --email --anonymize-ip
        _tavek_logrotate_words --commands --json --system-logs --apache-logs --nginx-logs --tavek-logs --fail2ban-logs \
            --modsecurity-logs --help -h
    else
        _tavek_logrotate_hosts
    fi
} && complete -F _tavek_logrotate_show tavek-logrotate-show
