#!/usr/bin/env bash
# The walk notices each fault that it can be given, cuts its script down, and that script fails again, by the fault alone.
# Usage: notices.sh velto-chaos FOLDER
set -euo pipefail
chaos=$1
folder=$2
mkdir -p "$folder"

bad=0
complain() {
  echo "$fault: $1"
  bad=1
}
for fault in $("$chaos" --faults | grep -v '^none$'); do
  script=$folder/$fault.script
  rm -f "$script"
  "$chaos" --steps 5000 --seed 1 --fault "$fault" --keep "$script" >"$folder/$fault.log" && complain 'not noticed'
  [ -s "$script" ] || { complain 'no script'; continue; }
  [ "$(grep -vc '^#' "$script")" -lt 100 ] || complain 'not cut down'
  "$chaos" --script "$script" --fault "$fault" >/dev/null && complain 'not again'
  "$chaos" --script "$script" >/dev/null || complain 'also without the fault'
done
[ "$("$chaos" --faults | wc -l)" -gt 5 ]
echo 'load 99' >"$folder/wrong.script"
"$chaos" --script "$folder/wrong.script" 2>/dev/null && bad=1
exit $bad
