#!/usr/bin/env bash
# Runs a command with a display, a session bus and a home folder of its own, and passes its exit code on. Tests and
# scripts that open windows go through it, so they neither need nor touch the caller's desktop. With --wayland a
# compositor fills that display, so that keys still come from xdotool.
set -u
tools=(Xvfb dbus-run-session)
backend=x11
if [ "${1-}" = --wayland ]; then
  backend=wayland
  tools+=(weston)
  shift
fi
if [ $# -eq 0 ]; then
  echo "usage: with-display.sh [--wayland] command [argument...]" >&2
  exit 2
fi
for tool in "${tools[@]}"; do
  if ! command -v "$tool" >/dev/null; then
    echo "with-display.sh: $tool is not installed (scripts/install-deps)" >&2
    exit 2
  fi
done

home=$(mktemp -d) || exit 2
server=
compositor=
child=
clean_up() {
  if [ -n "$child" ]; then kill -- "-$child" 2>/dev/null; fi
  if [ -n "$compositor" ]; then kill "$compositor" 2>/dev/null; wait "$compositor" 2>/dev/null; fi
  if [ -n "$server" ]; then kill "$server" 2>/dev/null; wait "$server" 2>/dev/null; fi
  rm -rf "$home"
}
trap clean_up EXIT
trap 'exit 143' TERM
trap 'exit 130' INT

# The server writes its number once it can be used; when it dies first, the read ends without one.
mkfifo "$home/display"
Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp -noreset 3>"$home/display" 2>"$home/server.log" &
server=$!
if ! read -r number <"$home/display"; then
  cat "$home/server.log" >&2
  echo "with-display.sh: Xvfb did not start" >&2
  exit 2
fi

mkdir -p "$home"/{data,config,cache,state,tmp}
mkdir -m 700 "$home/run"
unset WAYLAND_DISPLAY XDG_CURRENT_DESKTOP GTK_THEME
export DISPLAY=":$number" HOME="$home" TMPDIR="$home/tmp" XDG_RUNTIME_DIR="$home/run" XDG_DATA_HOME="$home/data"
export XDG_CONFIG_HOME="$home/config" XDG_CACHE_HOME="$home/cache" XDG_STATE_HOME="$home/state"
# Nor does this machine's system bus say anything.
export DBUS_SYSTEM_BUS_ADDRESS="unix:path=$home/no-system-bus"
export GDK_BACKEND=$backend GSK_RENDERER=cairo LIBGL_ALWAYS_SOFTWARE=1 WEBKIT_DISABLE_COMPOSITING_MODE=1
export NO_AT_BRIDGE=1 GTK_A11Y=none GSETTINGS_BACKEND=memory GIO_USE_VFS=local LC_ALL=C.UTF-8 no_proxy='*'

# The compositor says that it can be used by starting a program; when it dies first, there is nothing to read.
if [ $backend = wayland ]; then
  mkfifo "$home/ready"
  printf '#!/bin/sh\necho ready >"%s"\n' "$home/ready" >"$home/tell"
  chmod +x "$home/tell"
  printf '[core]\nidle-time=0\n[shell]\npanel-position=none\n[autolaunch]\npath=%s\n' "$home/tell" >"$home/weston.ini"
  (
    trap 'kill "$weston"' TERM
    weston --backend=x11-backend.so --use-pixman --width=1280 --height=1024 --socket=velto \
      --config="$home/weston.ini" >"$home/compositor.log" 2>&1 &
    weston=$!
    wait "$weston"
    echo ended 1<>"$home/ready"  # which does not wait for a reader
  ) &
  compositor=$!
  read -r state <"$home/ready"
  if [ "$state" != ready ]; then
    cat "$home/compositor.log" >&2
    echo "with-display.sh: weston did not start" >&2
    exit 2
  fi
  export WAYLAND_DISPLAY=velto
fi

# A process group of its own, so that all of it ends when this script is told to.
setsid dbus-run-session -- "$@" &
child=$!
wait "$child"
code=$?
child=
exit "$code"
