#!/usr/bin/env bash
# Plays creatives on several machines by GNU parallel, and joins what they found:
#
#   ./parallel.sh creatives.list report 8                    # eight parts, here
#   HOSTS=machines.txt ./parallel.sh creatives.list report 8 # on the machines of that file, which see the same folder
set -euo pipefail
creatives=${1:?creatives} report=${2:?folder of the report} parts=${3:-4}

status=0
seq "$parts" | parallel ${HOSTS:+--sshloginfile "$HOSTS" --workdir "$PWD"} --jobs 1 \
  velto-preview --all "$creatives" --shard "{}/$parts" --report "$report/part-{}" --strict || status=$?
[ "$status" -le "$parts" ]  # parallel's exit code counts the parts in which something failed; above that it is its own
velto-preview --merge --report "$report/all" "$report"/part-*
