#!/usr/bin/env bash
# What a GObject library shows to C is what was recorded: whoever changes that changes the record with it, and says so in
# CHANGELOG.md. What it shows to the test kit is nobody else's.
# usage: symbols.sh <library> <record>
set -euo pipefail
shown=$(nm --dynamic --defined-only --format=posix "$1" | cut -d' ' -f1 | grep -v '^_Z' | LC_ALL=C sort)
diff "$2" - <<<"$shown"
