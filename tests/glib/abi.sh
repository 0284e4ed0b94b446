#!/usr/bin/env bash
# Functions and types of the GObject library are those that were recorded in glib/*.abi, on every Debian release. Whoever
# changes them records them anew, and says so in CHANGELOG.md, in the same commit.
# usage: abi.sh [--record] LIBRARY TYPES BUILT-HEADERS   (to record, of a build with BUILD_SHARED_LIBS: any other shows more)
set -euo pipefail
record=
if [ "$1" = --record ]; then
  record=yes
  shift
fi
cd "$(dirname "$0")/../.."
as=(--drop-private-types --exported-interfaces-only --suppressions tests/glib/inner.abignore)
for program in "$1" "$2"; do
  name=$(basename "$program")
  recorded=glib/${name%%.so*}.abi
  if [ "$record" ]; then
    abidw "${as[@]}" --headers-dir glib --headers-dir "$3" --no-architecture --no-comp-dir-path --no-corpus-path --no-elf-needed \
      --no-show-locs "$program" | sed "s, path='[^']*/, path='," >"$recorded"
  elif ! abidiff "${as[@]}" --no-architecture --headers-dir2 glib --headers-dir2 "$3" "$recorded" "$program"; then
    echo "abi.sh: that differs from $recorded: tests/glib/abi.sh --record $* writes it anew, and CHANGELOG.md wants a line" >&2
    exit 1
  fi
done
if [ -e .git ]; then
  changed=$(git diff HEAD --name-only -- 'glib/*.abi' CHANGELOG.md)
  [ "$changed" ] || changed=$(git log -1 --format= --name-only --full-diff -- 'glib/*.abi')
  if [[ $changed == *.abi* && $changed != *CHANGELOG.md* ]]; then
    echo "abi.sh: the ABI changes without a line in CHANGELOG.md" >&2
    exit 1
  fi
fi
