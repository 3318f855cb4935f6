# Common to the scripts here; they source it first.
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# A precompiled header is the same for ccache when its sources are; and so is a file that another
# folder has compiled.
export CCACHE_SLOPPINESS=pch_defines,time_macros CCACHE_NOHASHDIR=1

# The system's own Python: the accessibility modules are installed for that one.
python=/usr/bin/python3

# configure FOLDER [meson options...]: makes the build folder, or gives it the options that it was
# not made with.
configure() {
  local folder=$1 log verb=setup
  shift
  if [ -f "$folder/build.ninja" ]; then
    if [ "$*" = "" ] || [ "$(cat "$folder/given-options" 2>/dev/null)" = "$*" ]; then return 0; fi
    verb=configure
  fi
  log=$(mktemp)
  meson "$verb" "$folder" "$@" >"$log" 2>&1 || { cat "$log"; rm -f "$log"; return 1; }
  echo "$*" >"$folder/given-options"
  rm -f "$log"
}

# setup_build FOLDER [meson options...]: makes the folder and builds everything in it.
setup_build() {
  configure "$@" && ninja -C "$1" --quiet
}
