#!/usr/bin/env bash
# Who may include what: toolkit headers stay in velto/gtk, GLib in velto/gtk and velto/platform/foundation, the JSON library in
# velto/platform/foundation and outside the library, libxml2 in one file of velto/vast; nothing in the library includes a platform or a tool.
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

[ "$(sources velto | wc -l)" -gt 50 ]  # else nothing below means anything
forbid 'toolkit headers outside velto/gtk' \
  'gtk/|gdk|gsk/|webkit|jsc/|libsoup|curl/|sqlite3|gst/|pulse/|libecal|cairo|pango' '^velto/gtk/' velto
forbid 'GLib headers outside velto/platform/foundation and velto/gtk' \
  'glib|gio/|gmodule|gobject/|velto/platform/foundation/GMemory' '^velto/(gtk|platform/foundation)/' velto
forbid 'the JSON library outside velto/platform/foundation' 'nlohmann' '^velto/platform/foundation/.*\.cpp$' velto
forbid 'libxml2 outside its one reader' 'libxml/' '^velto/vast/VASTNode\.cpp$' velto
forbid 'video documents including more than the seam' \
  'velto/(timeline|core|network|ads|ui|mraid|video|tracking|measurement)/' '^$' velto/vast
forbid 'video documents included by those whose programs need not have them' 'velto/vast/' '^velto/(vast|gtk)/' velto
forbid 'platforms included by what decides' 'velto/(gtk|headless)/' '^velto/(gtk|headless)/' velto
forbid 'one platform included by the other' 'velto/gtk/' '^velto/gtk/' velto/headless
forbid 'one platform included by the other' 'velto/headless/' '^velto/headless/' velto/gtk
forbid 'the seam including what stands on it' \
  'velto/(timeline|core|network|ads|ui|mraid|video|tracking|measurement)/' '^$' velto/platform
forbid 'timelines including what writes them' \
  'velto/(core|network|ads|ui|mraid|video|tracking|measurement)/' '^$' velto/timeline
forbid 'the GObject library below the public interface' \
  'velto/(core|network|ui|mraid|video|tracking|measurement|gtk/[a-z])|velto/ads/.*(Manager|Resolver|Passback|Monetize)' '^$' glib
forbid 'the headless platform in the GObject library, but in its test kit' 'velto/headless' '^glib/test/' glib
forbid 'tools or tests included by the library' 'sandbox/|tests/|gtest|gmock' '^$' velto glib
exit $bad
