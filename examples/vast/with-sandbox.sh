#!/usr/bin/env bash
# Makes films, starts velto-sandbox with them and with the documents of ads/, and runs the player on it: with the schedule
# ads/schedule.xml, or with breaks that are given by hand. --leave closes it at the end.
# usage: with-sandbox.sh <velto-sandbox> <vast-player> [--by-hand] [--leave]
set -euo pipefail
usage() {
  echo "usage: with-sandbox.sh velto-sandbox vast-player [--by-hand] [--leave]" >&2
  exit 2
}
[ $# -ge 2 ] || usage
sandbox=$1 player=$2
shift 2
by_hand=
options=()
for option in "$@"; do
  case "$option" in
    --by-hand) by_hand=yes ;;
    --leave) options+=(--leave) ;;
    *) usage ;;
  esac
done
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
server=
trap '[ -z "$server" ] || kill "$server" 2>/dev/null || true; rm -rf "$work"' EXIT

# film <name> <seconds> <pattern>
film() {
  gst-launch-1.0 -q videotestsrc pattern="$3" num-buffers=$(($2 * 25)) ! video/x-raw,width=640,height=360,framerate=25/1 ! \
    vp8enc deadline=1 ! queue ! webmmux name=film ! filesink location="$work/ads/$1" \
    audiotestsrc wave=ticks num-buffers=$(($2 * 43)) ! audioconvert ! vorbisenc ! queue ! film.
}
cp -r "$here/ads" "$work/ads"
film film.webm 20 ball
film shoes.webm 8 gradient
film tea.webm 5 checkers-8

mkfifo "$work/ready"
"$sandbox" --data "$work/sandbox" --serve "$work/ads" --log "$work/requests" >"$work/ready" &
server=$!
exec 3<"$work/ready"
read -r listening <&3 || { echo "with-sandbox.sh: the sandbox did not start" >&2; exit 2; }
port=$(sed 's/.*"port":\([0-9]*\).*/\1/' <<<"$listening")
ads=https://ads.velto.example
if [ "$by_hand" ]; then
  breaks=("$ads/film.webm" "$ads/before.xml,$ads/between.xml,$ads/behind.xml" 8)
else
  breaks=(--schedule "$ads/schedule.xml" --opportunities 12 "$ads/film.webm")
fi
"$player" --server "127.0.0.1:$port" --ca "$work/sandbox/ca.pem" --data "$work/store" "${options[@]}" "${breaks[@]}" || true
echo "what the servers of the ads were told:"
grep -o '"path":"/told/[^"]*"' "$work/requests" | sed 's/.*told.//; s/"$//'
