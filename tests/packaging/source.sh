# Sourced at the top of the source tree by the scripts that build packages.
# shellcheck shell=sh

# copy_source FOLDER: copies what belongs to the source: what git tracks or, in an unpacked source package, everything.
copy_source() {
  mkdir -p "$1"
  if [ -e .git ]; then
    git ls-files -z | tar -c --null --files-from=- | tar -x -C "$1"
  else
    tar -c --exclude=./build . | tar -x -C "$1"
  fi
}

# logged NAME LOG COMMAND [ARG ...]: runs the command with its output in a log, and says now and then how far it is.
logged() {
  logged_name=$1 logged_log=$2
  shift 2
  echo "$logged_name"
  (while sleep 10 >/dev/null 2>&1; do
    echo "$logged_name: $(grep -oE '^\[[0-9]+/[0-9]+\]|^ *[0-9]+/[0-9]+ Test' "$logged_log" | tail -n 1 | sed 's/^ */ /')"
  done) &
  logged_reporter=$!
  logged_status=0
  "$@" >"$logged_log" 2>&1 || logged_status=$?
  kill "$logged_reporter"
  wait "$logged_reporter" 2>/dev/null || true
  return "$logged_status"
}
