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
