#!/usr/bin/env bash
# Plays creatives that are broken on purpose, and those that are there to try, and compares what is found with what the first
# line of each says. Lines "near ID: PATTERN" are of those that come close: an event shows that they really do. Usage: findings.sh VELTO-PREVIEW BROKEN EXAMPLES
set -u
folder=$(mktemp -d) || exit 2
trap 'rm -rf "$folder"' EXIT
mkdir "$folder/ads"
cp "$2"/*.html "$3"/*.html "$folder/ads"
for size in 195 250 4100; do head -c "${size}000" /dev/urandom >"$folder/ads/${size}k.bin"; done
touch "$folder"/ads/empty.{css,js}
(cd "$folder/ads" && ls ./*.html) | sed 's/video.html/& --interstitial/' >"$folder/ads/list"
"$1" --all "$folder/ads/list" --jobs 3 --timeout 60 --report "$folder/report" >"$folder/output" 2>&1

declare -A examples=(
  [expanding]='endless-animation not-measured' [measured]='' [resizing]=not-measured
  [two-part]='endless-animation not-measured' [two-part-second]='no-load-finished not-measured'
  [video]='endless-animation not-measured')
faults=0
for page in "$folder"/ads/*.html; do
  name=$(basename "$page" .html)
  wanted=${examples[$name]-$(sed -n '1s/<!-- finds: *\(.*[^ ]\) *-->/\1/p' "$page")}
  report=$folder/report/$name.html
  found=$(sed -n 's/^ *"id": "\(.*\)",$/\1/p' "$report/findings.json" | xargs)
  if [ "$found" != "$wanted" ]; then
    echo "$name: found \"$found\", not \"$wanted\"" && cat "$report/findings.json"
    faults=1
  fi
  while IFS= read -r pattern; do
    grep -q -- "$pattern" "$report/events.jsonl" && continue
    echo "$name: no event has $pattern"
    faults=1
  done < <(sed -n 's/^<!-- near [a-z-]*: \(.*\) -->$/\1/p' "$page")
done
grep -q '"url": "http://127.0.0.1:[0-9]*/250k.bin"' "$folder/report/heavy-before-load.html/requests.har" || faults=1
exit $faults
