# Common to the scripts here; they source it first.
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# The system's own Python: the accessibility modules are installed for that one.
python=/usr/bin/python3

# setup_build FOLDER [meson options...]: configures the folder unless it is, and builds it.
setup_build() {
  local folder=$1 log
  shift
  if [ ! -f "$folder/build.ninja" ]; then
    log=$(mktemp)
    meson setup "$folder" "$@" >"$log" 2>&1 || { cat "$log"; rm -f "$log"; return 1; }
    rm -f "$log"
  fi
  ninja -C "$folder" --quiet
}
