# Prints the completions of a command line in bash: complete.bash COMPLETION-FILE LINE
# shellcheck disable=SC1090,SC1091 # both are sourced as in a user's shell
. /usr/share/bash-completion/bash_completion
. "$1"

# Splits the line into words like readline, which makes an equals sign a word of its own.
COMP_LINE=$2
COMP_POINT=${#COMP_LINE}
read -ra COMP_WORDS <<<"${COMP_LINE//=/ = }"
[[ $COMP_LINE == *' ' ]] && COMP_WORDS+=('')
COMP_CWORD=$((${#COMP_WORDS[@]} - 1))

# Calls the function that is registered for the program.
read -ra registered <<<"$(complete -p tavek-logrotate)"
"${registered[2]}" tavek-logrotate "${COMP_WORDS[COMP_CWORD]}" "${COMP_WORDS[COMP_CWORD - 1]}"
printf '%s\n' "${COMPREPLY[@]}"
