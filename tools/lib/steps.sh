# Sourced by tools/test and tools/nightly: runs steps, reports their progress and collects the failed ones.
# shellcheck shell=bash

logs=build/${0##*/}
mkdir -p "$logs"
rm -f "$logs"/*
trap 'trap - TERM; kill 0' INT TERM # The lanes of tools/test and the progress reports end with the script.

say() {
  printf '%5d s  %s\n' "$SECONDS" "$*"
}

# build PRESET
build() {
  cmake --preset "$1" && cmake --build --preset "$1"
}

# Prints the last line of a step's log every 20 seconds.
report_progress() {
  while sleep 20 >/dev/null 2>&1 && kill -0 $$; do
    say "$1: $(tail -n 1 "$2" | cut -c 1-120)"
  done
}

# step NAME COMMAND [ARG ...]: runs the command with its output in a log. If it fails, prints the end of the log.
step() {
  local name=$1 log=$logs/${1// /-}.log start=$SECONDS status=0 reporter
  shift
  say "$name"
  report_progress "$name" "$log" &
  reporter=$!
  "$@" >"$log" 2>&1 </dev/null || status=$?
  kill "$reporter"
  wait "$reporter" 2>/dev/null || true
  if [ "$status" -eq 0 ]; then
    say "ok: $name ($((SECONDS - start)) s): $(tail -n 1 "$log" | cut -c 1-120)"
  else
    tail -n 100 "$log"
    say "FAILED: $name ($((SECONDS - start)) s), exit status $status, see $log"
    echo "$name" >>"$logs/failed"
  fi
  return "$status"
}

# Ends the script with a summary.
finish() {
  if [ -e "$logs/failed" ]; then
    say "FAILED: $(paste -s -d , "$logs/failed")"
    exit 1
  fi
  say 'every step passed'
  exit 0
}
