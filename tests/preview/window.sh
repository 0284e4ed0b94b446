#!/usr/bin/env bash
# What a person does with the window: keys that cover, turn and mute the device, and a file that is saved; and the steps that
# take its picture.
set -euo pipefail
work=$(mktemp -d)
trap 'kill "${player-}" 2>/dev/null || true; rm -rf "$work"' EXIT
creatives=$(dirname "$0")/../../examples/creatives
printf 'press cover\npress findings\npicture window\n' >"$work/steps"
"$1" --out "$work" --steps "$work/steps" "$creatives/expanding.html" >"$work/told"
test -s "$work/window.png"

cp "$creatives/expanding.html" "$work/ad.html"
mkfifo "$work/events"
"$1" "$work/ad.html" >"$work/events" &
player=$!
exec 3<"$work/events"

# Reads on until that is told.
await() {
  local line
  while read -r -t 120 line <&3; do
    [[ $line != *$1* ]] || return 0
  done
  echo "window: $1 did not come" >&2
  exit 1
}
# A search among all windows fails when one of them goes meanwhile.
window=
key() {
  until [ -n "$window" ]; do
    kill -0 "$player"
    window=$(xdotool search --onlyvisible --name '^ad.html – velto-preview$' | tail -1) || true
  done
  xdotool windowfocus "$window" key "$1"
}

await '"event":"load-finished"'
key ctrl+b
await '"percentageInView":50'
key ctrl+b
await '"percentageInView":100'
key ctrl+t
await '"frame":{"height":50,"width":320,"x":262,"y":340}'
key ctrl+m
await 'volumePercentage: 0.0'
echo '<script>setInterval("console.log(1)", 500)</script>' >>"$work/ad.html"
await '"event":"load-finished"'
await 'volumePercentage: 0.0'  # the next ad is on the same device
await '"event":"page"'         # and is judged, although it never rests
key ctrl+q || true  # the key comes up after the window has gone
wait "$player"
