# Prints what bash completes behind a command line: complete.bash COMPLETION-FILE LINE
# shellcheck disable=SC1090,SC1091 # both are read as the shell of a user would read them
. /usr/share/bash-completion/bash_completion
. "$1"

# Into words as readline does it, an equals sign being one of its own.
COMP_LINE=$2
COMP_POINT=${#COMP_LINE}
read -ra COMP_WORDS <<<"${COMP_LINE//=/ = }"
[[ $COMP_LINE == *' ' ]] && COMP_WORDS+=('')
COMP_CWORD=$((${#COMP_WORDS[@]} - 1))

# The function that bash would call: the one registered under the program's name.
read -ra registered <<<"$(complete -p tavek-logrotate)"
"${registered[2]}" tavek-logrotate "${COMP_WORDS[COMP_CWORD]}" "${COMP_WORDS[COMP_CWORD - 1]}"
printf '%s\n' "${COMPREPLY[@]}"
