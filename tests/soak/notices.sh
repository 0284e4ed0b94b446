#!/usr/bin/env bash
# What is left behind, a main loop that waits, ads that do not come and a refresh that grows are noticed, each by its
# name. Usage: notices.sh velto-soak velto-sandbox [videos|no-videos], on a display.
set -uo pipefail
soak=$1
sandbox=$2
bad=0

# wants <exit code> <pattern> <argument>...: the pattern is in what the program says.
wants() {
  local code=$1 pattern=$2 said
  shift 2
  said=$("$soak" "$@" 2>&1)
  local got=$?
  if [ "$got" -ne "$code" ] || ! grep -qE -- "$pattern" <<<"$said"; then
    echo "velto-soak $*: exit code $got, and not \"$pattern\" in"
    echo "$said"
    bad=1
  fi
}
all='over the limit: heap, KiB, own memory, KiB, descriptors, threads, processes, temporary files, the library.s folder, KiB, names on the bus, the main loop.s wait$'
wants 1 "$all" --sandbox "$sandbox" --seconds 1 --round 1 --seed 1 --fault leak
wants 1 'placement [0-7] shows no ad within 3 s: ' --sandbox "$sandbox" --seconds 1 --seed 1 --fault ill
wants 1 'heap, KiB .* OVER' --sandbox "$sandbox" --refreshes 40 --fault leak
case ${3-} in
  videos) wants 1 'leave: .*descriptors, threads' --sandbox "$sandbox" --videos 8 --fault leak ;;
  no-videos) wants 2 '^velto-soak: built without video ads' --sandbox "$sandbox" --videos 8 ;;
esac
wants 2 '^velto-soak: no such number: many$' --sandbox "$sandbox" --seconds many
wants 2 '^velto-soak: .* does not run$' --sandbox /nowhere --seconds 1
exit $bad
