#!/usr/bin/env bash
# Starts velto-sandbox with the demo's ads, runs a program told where it is (--server ADDRESS --ca FILE --data FOLDER),
# and ends the sandbox with it. A request that a real server would not expect is refused.
# usage: with-sandbox.sh <velto-sandbox> <program> [argument...]
set -euo pipefail
if [ $# -lt 2 ]; then
  echo "usage: with-sandbox.sh velto-sandbox program [argument...]" >&2
  exit 2
fi
sandbox=$1
shift
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
server=
films=
trap 'for started in $server $films; do kill "$started" 2>/dev/null || true; done; rm -rf "$work"' EXIT

# The demo's own ads, and the creatives, whose relative addresses mean this server. Films are made for them: a short one, and
# one for the video ad that is long enough for what a person does on a busy machine.
cp -r "$here/ads" "$work/ads"
cp "$here"/../creatives/*.html "$work/ads"
mkdir "$work/films"
# film <name> <seconds> <pictures a second>
film() {
  gst-launch-1.0 -q videotestsrc pattern=ball num-buffers=$(($2 * $3)) ! video/x-raw,width=640,height=360,framerate="$3"/1 ! \
    vp8enc deadline=1 ! queue ! webmmux name=film ! filesink location="$work/films/$1" \
    audiotestsrc wave=ticks num-buffers=$(($2 * 43)) ! audioconvert ! vorbisenc ! queue ! film. || rm -f "$work/films/$1"
}
if command -v gst-launch-1.0 >/dev/null; then
  film film.webm 4 25
  film ferries.webm 60 10
fi
mkfifo "$work/films-ready"
python3 -u -m http.server 0 --bind 127.0.0.1 --directory "$work/films" >"$work/films-ready" 2>/dev/null &
films=$!
read -r serving <"$work/films-ready"
films_port=$(sed 's/.* port \([0-9]*\).*/\1/' <<<"$serving")
sed -i -e 's|<head>|<head><base href="https://ads.velto.example/">|' \
  -e "s|https://long-coast.example/\([a-z]*\.webm\)|http://127.0.0.1:$films_port/\1|" \
  "$work"/ads/{expanding,resizing,two-part,two-part-second,video,measured}.html "$work/ads/video-ad.xml"

# Its first line of output says where it listens; when it dies first, the read ends without one.
mkfifo "$work/ready"
"$sandbox" --data "$work/sandbox" --scenario "$work/ads/scenario.json" --serve "$work/ads" --strict --log "$work/requests" >"$work/ready" &
server=$!
exec 3<"$work/ready"
read -r listening <&3 || { echo "with-sandbox.sh: the sandbox did not start" >&2; exit 2; }
port=$(sed 's/.*"port":\([0-9]*\).*/\1/' <<<"$listening")

code=0
"$@" --server "127.0.0.1:$port" --ca "$work/sandbox/ca.pem" --data "$work/store" || code=$?
if grep -v '"problems":\[\]' "$work/requests" >"$work/wrong" 2>/dev/null; then
  echo "with-sandbox.sh: the server found these requests wrong:" >&2
  cat "$work/wrong" >&2
  [ $code -ne 0 ] || code=1
fi
exit $code
