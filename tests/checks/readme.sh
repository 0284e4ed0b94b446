#!/usr/bin/env bash
# The README's application is the one that is compiled; the paths that it names exist; packages bear the version of the
# library; the page on sandboxes names each service of a bus that the library talks to.
set -euo pipefail

diff <(sed -n '/^```cpp$/,/^```$/p' README.md | sed '1d;$d') examples/first-banner/main.cpp ||
  { echo "README.md does not show examples/first-banner/main.cpp" >&2; exit 1; }

bad=0
of_packages=$(sed -nE '1s/.*\((.*)\).*/\1/p' debian/changelog)
grep -q "^project(velto VERSION ${of_packages%-*} " CMakeLists.txt || { echo "debian/changelog has the version $of_packages, which CMakeLists.txt has not" >&2; bad=1; }

while IFS= read -r path; do
  if [ ! -e "$path" ]; then
    echo "README.md names $path, which does not exist" >&2
    bad=1
  fi
done < <(grep -oE '`(velto|tools|examples|tests|scripts|docs|cmake|packaging)(/[A-Za-z./-]+)?`' README.md | grep -v "\.so" | tr -d '\`' | sort -u)

while IFS= read -r service; do
  grep -q "$service" docs/sandboxes.md || { echo "docs/sandboxes.md does not name $service" >&2; bad=1; }
done < <(grep -rhoE '"(org\.freedesktop|net\.hadess)\.[A-Za-z0-9]+"' velto/gtk | tr -d '"' | sort -u)
exit $bad
