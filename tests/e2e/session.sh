#!/bin/sh
# Runs a command in a desktop session of its own: X server, session bus, window manager, a tray for
# status icons, and accessibility, so that a program can be operated by what is visible in it.
# Settings and data of the user are out of reach: home is a temporary folder that is removed again.
#
#   session.sh COMMAND [ARGUMENT...]
#
# The exit status is that of the command. ZEMBLAR_SCREEN sets the size, as in 1280x800x24, and
# ZEMBLAR_LOOK more of the toolkit's settings, as in 'gtk-font-name = "DejaVu Sans 16"'.
set -eu

# keep COMMAND...: a desktop begins its window manager and its tray again when they end.
keep() {
  while true; do
    "$@" >>"$HOME/$1.log" 2>&1 || true
    sleep 0.2
    xprop -root >/dev/null 2>&1 || return 0
    echo "$1 has ended and is begun again" >&2
  done
}

# await NAME TEST: until what is kept by that name is there.
await() {
  for _ in $(seq 150); do
    sh -c "$2" >/dev/null 2>&1 && return
    sleep 0.1
  done
  echo "no $1:" >&2
  cat "$HOME/$1.log" >&2
  exit 1
}

if [ "${ZEMBLAR_SESSION_STEP:-}" = inside ]; then
  unset ZEMBLAR_SESSION_STEP
  export GTK_MODULES=gail:atk-bridge NO_AT_BRIDGE=0 GTK2_RC_FILES="$HOME/gtkrc"
  keep openbox --sm-disable &
  /usr/libexec/at-spi-bus-launcher --launch-immediately >"$HOME/at-spi.log" 2>&1 &
  await openbox 'xprop -root _NET_SUPPORTED | grep -q _NET_ACTIVE_WINDOW'
  # The tray asks the window manager for its place.
  keep trayer --edge top --align right --widthtype request --height 28 &
  await trayer 'xdotool search --class trayer'
  status=0
  "$@" || status=$?
  # The X server ends with this script, and with it everything that needs a display.
  exit "$status"
fi

home=$(mktemp -d)
trap 'rm -rf "$home"' EXIT
mkdir -m 700 "$home/run" "$home/config" "$home/data" "$home/cache"
cat >"$home/gtkrc" <<RC
gtk-theme-name = "Adwaita"
gtk-icon-theme-name = "Adwaita"
gtk-font-name = "DejaVu Sans 9"
gtk-enable-animations = 0
gtk-cursor-blink = 0
${ZEMBLAR_LOOK:-}
RC
# The window manager's own menus are nobody's to choose from.
mkdir "$home/config/openbox"
echo '<openbox_menu><menu id="root-menu" label=""/></openbox_menu>' >"$home/config/openbox/menu.xml"
status=0
# Without -noreset the X server begins anew whenever its last client leaves, and refuses those who
# come meanwhile: a window manager would not start beside a short look at the root window.
env -u DBUS_SESSION_BUS_ADDRESS -u WAYLAND_DISPLAY \
  HOME="$home" XDG_CONFIG_HOME="$home/config" XDG_DATA_HOME="$home/data" \
  XDG_CACHE_HOME="$home/cache" XDG_RUNTIME_DIR="$home/run" GIO_USE_VFS=local \
  LANG="${ZEMBLAR_LANG:-C.UTF-8}" LC_ALL= ZEMBLAR_SESSION_STEP=inside \
  xvfb-run -a -s "-screen 0 ${ZEMBLAR_SCREEN:-1280x800x24} -noreset" \
  dbus-run-session -- "$0" "$@" || status=$?
exit "$status"
