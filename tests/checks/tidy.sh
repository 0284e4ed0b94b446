#!/usr/bin/env bash
# clang-tidy by .clang-tidy on the library and the headless platform, a folder at a time: most of the time goes into
# headers. Folders that passed are not looked at again until something in velto or the rules change. The path-sensitive
# checks are left to editors: they take minutes, and look only at one file at a time.
# usage: tidy.sh <build folder>
set -euo pipefail
. "$(dirname "$0")/sources.sh"
stamps=$1/tidy
mkdir -p "$stamps"

# What the build gives the compiler to find headers and names.
mapfile -t flags < <(python3 - "$1/compile_commands.json" <<'PYTHON'
import json, shlex, sys
for entry in json.load(open(sys.argv[1])):
    if "/velto.dir/" in entry["file"]:
        words = shlex.split(entry["command"])
        pairs = zip(words, words[1:] + [""])
        print("\n".join(w if len(w) > 2 else f"{w}\n{n}" for w, n in pairs if w.startswith(("-D", "-I"))))
        print("\n".join(f"-isystem\n{n}" for w, n in zip(words, words[1:]) if w == "-isystem"))
        break
PYTHON
)
[ ${#flags[@]} -gt 0 ] || { echo "tidy: $1 knows no sources" >&2; exit 2; }

newest=$(find velto .clang-tidy -type f -printf '%T@ %p\n' | sort -n | tail -n 1 | cut -d ' ' -f 2-)
check() {
  local name=${1//\//-} file
  [ "$stamps/$name.passed" -nt "$newest" ] && return 0
  for file in "$1"/*.cpp; do echo "#include \"$PWD/$file\""; done >"$stamps/$name.cpp"
  if clang-tidy --quiet --config-file=.clang-tidy --checks=-clang-analyzer-*,-bugprone-suspicious-include \
    --header-filter='velto/.*\.(h|cpp)$' "$stamps/$name.cpp" -- -std=c++20 "${flags[@]}" >"$stamps/$name.log" 2>&1; then
    touch "$stamps/$name.passed"
  else
    grep -E '(error|warning):' "$stamps/$name.log" || tail -n 3 "$stamps/$name.log"
    return 1
  fi
}

failed=0
running=()
for folder in $(sources velto | grep '\.cpp$' | grep -v '^velto/gtk/' | xargs -n 1 dirname | sort -u); do
  check "$folder" &
  running+=($!)
  while [ "$(jobs -rp | wc -l)" -ge "$(nproc)" ]; do wait -n || true; done
done
for job in "${running[@]}"; do wait "$job" || failed=1; done
exit "$failed"
