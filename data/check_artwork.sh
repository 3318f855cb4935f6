#!/bin/sh
# check_artwork.sh RENDERER FOLDER: every picture under FOLDER can be drawn, has the size that the
# program lays it out for, and is compiled into the program or, for a signal's, installed.
set -u
renderer=$1
folder=$2
picture=$(mktemp)
trap 'rm -f "$picture"' EXIT
failed=0

complain() {
  echo "$1" >&2
  failed=1
}

# Width and height stand in a PNG as two big-endian words, 16 bytes into it.
size_of_png() {
  od -An -tu1 -j16 -N8 "$1" |
    awk '{ print (($1 * 256 + $2) * 256 + $3) * 256 + $4 "x" (($5 * 256 + $6) * 256 + $7) * 256 + $8 }'
}

expect_size() {
  name=$1
  size=$2
  if ! "$renderer" "$folder/$name" -o "$picture"; then
    complain "$name: cannot be drawn"
  elif [ "$(size_of_png "$picture")" != "$size" ]; then
    complain "$name: is $(size_of_png "$picture"), not $size"
  fi
  case $name in
    *-splash.svg) grep -q "preprocess=\"to-pixdata\">$name</file>" "$folder/zemblar.gresource.xml" ||
      complain "$name: is not drawn when the program is built, and the start waits for it" ;;
    signals/*) grep -q "'$name'" "$folder/meson.build" || complain "$name: is not installed" ;;
    *) grep -q "<file>$name</file>" "$folder/zemblar.gresource.xml" ||
      complain "$name: is not compiled in" ;;
  esac
}

for path in "$folder"/icons/*.svg "$folder"/dial/*.svg "$folder"/signals/*.svg; do
  name=${path#"$folder"/}
  case $name in
    dial/*) expect_size "$name" 240x240 ;;
    icons/*-splash.svg) expect_size "$name" 480x280 ;;
    signals/main-2-*) expect_size "$name" 16x34 ;;
    signals/main-3-*) expect_size "$name" 16x44 ;;
    signals/shunt-*) expect_size "$name" 16x20 ;;
    *) expect_size "$name" 48x48 ;;
  esac
done
exit $failed
