#!/usr/bin/env bash
# Two shards of a list, each played by the program given, and their reports joined.
set -euo pipefail
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp "$(dirname "$0")"/../../examples/creatives/{expanding,measured}.* "$work"
printf '%s\n' expanding.html 'measured.html --size 300x250' >"$work/list"
for shard in 1 2; do
  "$1" --all "$work/list" --shard "$shard/2" --report "$work/$shard"
done
"$1" --merge --report "$work/all" "$work/2" "$work/1"
grep -q '<testsuites tests="2" failures="0" errors="0">' "$work/all/junit.xml"
for name in expanding measured; do
  grep -q "href=\"$name.html/report.html\"" "$work/all/index.html"
  [ -s "$work/all/$name.html/report.html" ]
done
