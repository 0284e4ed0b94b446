#!/usr/bin/env bash
# clang-tidy by .clang-tidy on the library and the headless platform. Files that passed are not looked at again until
# they, a header or the rules change. The path-sensitive checks run in their shallow mode, which is ten times as fast.
# usage: tidy.sh <build folder>
set -euo pipefail
. "$(dirname "$0")/sources.sh"
export build=$1
export stamps=$build/tidy
mkdir -p "$stamps"

newest=$( (sources src; echo .clang-tidy) | grep -vE '\.cpp$' | xargs ls -t | head -n 1)
export newest
check() {
  local file=$1 stamp
  stamp=$stamps/${file//\//-}.passed
  if [ "$stamp" -nt "$file" ] && [ "$stamp" -nt "$newest" ]; then return 0; fi
  touch "$stamp.begun"
  if clang-tidy -p "$build" --quiet --extra-arg=-Xclang --extra-arg=-analyzer-config --extra-arg=-Xclang \
    --extra-arg=mode=shallow --extra-arg=-Wno-unknown-warning-option "$file" 2>"$stamp.log"; then
    mv "$stamp.begun" "$stamp"
  else
    grep -E '^(error|/.*error):' "$stamp.log" || true
    return 1
  fi
}
export -f check
sources src | grep '\.cpp$' | grep -v '^src/gtk/' | xargs -P "$(nproc)" -I{} bash -c 'check {}'
