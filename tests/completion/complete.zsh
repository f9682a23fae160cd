# Prints the completions of a command line in zsh: complete.zsh FOLDER LINE. FOLDER contains the completion function.
# An interactive shell on a pseudo-terminal receives the line and a tab and records its matches in a file. Descriptions
# and messages are printed after a tab.
zmodload zsh/zpty
zmodload zsh/zselect
export MATCHES=$1/matches TERM=dumb
rm -f $MATCHES $MATCHES.done
cat >$1/setup.zsh <<'SETUP'
PROMPT= fpath=($1 $fpath)
autoload -Uz compinit
compinit -u -d $1/dump # With the dump file, later shells start in a quarter of the time.
compadd() {
  local -a found options
  options=(${@[1,(i)(-|--)]})
  # With -O, -A or -D the completion system only queries and adds nothing.
  if (( ! $options[(I)-(O|A|D)] )); then
    builtin compadd -A found "$@"
    (( $#found )) && print -rl -- ${(Q)found} >>$MATCHES
    (( $options[(I)-x] )) && print -r -- $'\t'$options[$options[(i)-x]+1] >>$MATCHES
    (( $options[(I)-d] )) && print -rl -- $'\t'${(P)^options[$options[(i)-d]+1]} >>$MATCHES
  fi
  builtin compadd "$@"
}
complete_and_report() {
  _main_complete
  : >$MATCHES.done
}
zle -C complete-word complete-word complete_and_report
bindkey '^I' complete-word
SETUP
zpty shell zsh -f -i
zpty -w shell "source $1/setup.zsh $1"
zpty -n -w shell "$2"$'\t'
for wait in {1..1500}; do
  [[ -e $MATCHES.done ]] && break
  zselect -t 2
done
zpty -d shell
[[ -e $MATCHES.done ]] || { print -u2 'zsh did not complete in 30 s'; exit 1; }
[[ -e $MATCHES ]] && sort -u $MATCHES
exit 0
