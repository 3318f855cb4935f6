# Common to the scripts here; they source it first.
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# The system's own Python: the accessibility modules are installed for that one.
python=/usr/bin/python3

# configure FOLDER [meson options...]: makes the build folder unless it is there.
configure() {
  local folder=$1 log
  shift
  if [ -f "$folder/build.ninja" ]; then return 0; fi
  log=$(mktemp)
  meson setup "$folder" "$@" >"$log" 2>&1 || { cat "$log"; rm -f "$log"; return 1; }
  rm -f "$log"
}

# setup_build FOLDER [meson options...]: makes the folder and builds everything in it.
setup_build() {
  configure "$@" && ninja -C "$1" --quiet
}
