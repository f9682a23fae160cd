# Sourced by the shell tools before anything else: --help prints the tool's header comment and exits.
# shellcheck shell=sh
case ${1-} in
  -h | --help)
    sed -n '2,/^[^#]/s/^# \{0,1\}//p' "$0"
    exit 0
    ;;
esac
