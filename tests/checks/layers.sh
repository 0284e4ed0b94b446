#!/usr/bin/env bash
# Who may include what: toolkit headers stay in src/gtk, GLib in src/gtk and src/platform/foundation, the JSON library in
# src/platform/foundation and outside the library; nothing in the library includes a platform or a tool.
set -euo pipefail
. "$(dirname "$0")/sources.sh"

bad=0
# forbid <what> <pattern of the included file> <pattern of the files that may> <folder>...
forbid() {
  local what=$1 included=$2 may=$3
  shift 3
  local found
  found=$(sources "$@" | grep -vE "$may" | xargs grep -nHE "^[[:space:]]*#[[:space:]]*include[[:space:]]*[<\"]($included)" || true)
  if [ -n "$found" ]; then
    echo "$what:"
    echo "$found"
    bad=1
  fi
}

[ "$(sources src | wc -l)" -gt 50 ]  # else nothing below means anything
forbid 'toolkit headers outside src/gtk' \
  'gtk/|gdk|gsk/|webkit|jsc/|libsoup|curl/|sqlite3|gst/|pulse/|libecal|cairo|pango' '^src/gtk/' src
forbid 'GLib headers outside src/platform/foundation and src/gtk' \
  'glib|gio/|gmodule|gobject/|velto/platform/foundation/GMemory' '^src/(gtk|platform/foundation)/' src
forbid 'the JSON library outside src/platform/foundation' 'nlohmann' '^src/platform/foundation/.*\.cpp$' src
forbid 'platforms included by what decides' 'velto/(gtk|headless)/' '^src/(gtk|headless)/' src
forbid 'one platform included by the other' 'velto/gtk/' '^src/gtk/' src/headless
forbid 'one platform included by the other' 'velto/headless/' '^src/headless/' src/gtk
forbid 'the seam including what stands on it' \
  'velto/(core|network|ads|ui|mraid|video|tracking|measurement)/' '^$' src/platform
forbid 'tools or tests included by the library' 'sandbox/|tests/|gtest|gmock' '^$' src
exit $bad
