#!/usr/bin/env bash
# The README's application is the one that is compiled; the paths that it names exist.
set -euo pipefail

diff <(sed -n '/^```cpp$/,/^```$/p' README.md | sed '1d;$d') examples/first-banner/main.cpp ||
  { echo "README.md does not show examples/first-banner/main.cpp" >&2; exit 1; }

bad=0
while IFS= read -r path; do
  if [ ! -e "$path" ]; then
    echo "README.md names $path, which does not exist" >&2
    bad=1
  fi
done < <(grep -oE '`(velto|tools|examples|tests|scripts|docs|cmake)(/[A-Za-z./-]+)?`' README.md | grep -v "\.so" | tr -d '\`' | sort -u)
exit $bad
