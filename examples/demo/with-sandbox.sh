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
ads=$(cd "$(dirname "$0")/ads" && pwd)
work=$(mktemp -d)
server=
trap '[ -z "$server" ] || kill "$server" 2>/dev/null; rm -rf "$work"' EXIT

# Its first line of output says where it listens; when it dies first, the read ends without one.
mkfifo "$work/ready"
"$sandbox" --data "$work/sandbox" --scenario "$ads/scenario.json" --strict --log "$work/requests" >"$work/ready" &
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
