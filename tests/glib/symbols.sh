#!/usr/bin/env bash
# What the GObject library shows is what was recorded: whoever changes that changes glib/velto-glib.symbols with it, and says
# so in CHANGELOG.md.
# usage: symbols.sh <library>
set -euo pipefail
recorded=$(dirname "$0")/../../glib/velto-glib.symbols
shown=$(nm --dynamic --defined-only --format=posix "$1" | cut -d' ' -f1 | LC_ALL=C sort)
diff "$recorded" - <<<"$shown"
