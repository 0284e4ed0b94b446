#!/bin/sh
# A person's hands and devices as steps, which end in the one that must fail; and what was done by hand as steps again.
#   touched.sh PROGRAM FOLDER
set -eu
creatives=$(dirname "$0")/creatives
rm -rf "$2" && mkdir -p "$2"
code=0
"$1" --out "$2" --set "OUT=$2" --record "$2/recorded.steps" --device phone --steps "$creatives/touched.steps" \
  "$creatives/touched.html" > "$2/told" || code=$?
grep '"event":"failure"' "$2/told"
test $code -eq 1
grep -q '"event":"failure","file":.*"text":"it is covered by <i class=\\"over\\">"' "$2/told"
test -s "$2/failure-line-3.png" && ! test -e "$2/after-difference.png"
grep -vx 'wait .*' "$2/recorded.steps" | sed 's/[0-9].*//' | tr -d '\n' > "$2/recorded"
grep -x 'wait-for event load-finishedtap tap tap type Hellolong-press swipe scroll scroll rotate landscape' "$2/recorded"
