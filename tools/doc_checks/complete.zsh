# Prints what zsh completes behind a command line: complete.zsh FOLDER LINE, the completion function being in FOLDER.
# A real interactive shell on a terminal of its own gets the line and a tab; what it adds as matches goes to a file.
zmodload zsh/zpty
zmodload zsh/zselect
export MATCHES=$1/matches TERM=dumb
rm -f $MATCHES $MATCHES.done
cat >$1/setup.zsh <<'SETUP'
PROMPT= fpath=($1 $fpath)
autoload -Uz compinit
compinit -u -D
compadd() {
  local -a found
  # With one of these it is a query by the completion system itself and adds nothing.
  if (( ! ${@[1,(i)(-|--)][(I)-(O|A|D)]} )); then
    builtin compadd -A found "$@"
    (( $#found )) && print -rl -- $found >>$MATCHES
  fi
  builtin compadd "$@"
}
complete_and_tell() {
  _main_complete
  : >$MATCHES.done
}
zle -C complete-word complete-word complete_and_tell
bindkey '^I' complete-word
SETUP
zpty shell zsh -f -i
zpty -w shell "source $1/setup.zsh $1"
zpty -n -w shell "$2"$'\t'
for tenth in {1..300}; do
  [[ -e $MATCHES.done ]] && break
  zselect -t 10
done
zpty -d shell
[[ -e $MATCHES.done ]] || { print -u2 'zsh did not complete in 30 s'; exit 1; }
[[ -e $MATCHES ]] && sort -u $MATCHES
exit 0
