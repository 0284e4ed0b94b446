#!/usr/bin/env bash
# clang-tidy by .clang-tidy on the library and the headless platform: on all of it where CI is set, else on the files
# that differ from the last commit that passed, or from where this branch left the main one. Files of one subsystem are
# read together, since most of the time goes into the headers that they share. The path-sensitive checks are left to
# editors: they take minutes, and look only at one file at a time.
# usage: tidy.sh <build folder>
set -euo pipefail
. "$(dirname "$0")/sources.sh"
work=$1/tidy
mkdir -p "$work"

# What the build gives the compiler to find headers and names.
mapfile -t flags < <(python3 - "$1/compile_commands.json" <<'PYTHON'
import json, shlex, sys
wanted = ["/velto.dir/", "/velto_vast.dir/"]
for entry in json.load(open(sys.argv[1])):
    for folder in [one for one in wanted if one in entry["file"]]:
        wanted.remove(folder)
        words = shlex.split(entry["command"])
        pairs = zip(words, words[1:] + [""])
        print("\n".join(w if len(w) > 2 else f"{w}\n{n}" for w, n in pairs if w.startswith(("-D", "-I"))))
        print("\n".join(f"-isystem\n{n}" for w, n in zip(words, words[1:]) if w == "-isystem"))
PYTHON
)
[ ${#flags[@]} -gt 0 ] || { echo "tidy: $1 knows no sources" >&2; exit 2; }

# base prints the commit to compare with; without one, everything is looked at.
base() {
  local passed
  passed=$(cat "$work/passed" 2>/dev/null) && git merge-base --is-ancestor "$passed" HEAD 2>/dev/null && echo "$passed" && return
  git merge-base HEAD main 2>/dev/null || git merge-base HEAD origin/main 2>/dev/null
}
chosen() {
  local since
  if [ -z "${CI:-}" ] && since=$(base) && git diff --quiet "$since" -- .clang-tidy; then
    { git diff --name-only --diff-filter=d "$since" -- velto; git ls-files --others --exclude-standard velto; } | grep -E '\.(h|cpp)$' || true
  else
    sources velto | grep '\.cpp$'
  fi | grep -v '^velto/gtk/' | sort -u
}
check() {
  if ! clang-tidy --quiet --config-file=.clang-tidy --checks=-clang-analyzer-*,-bugprone-suspicious-include \
    --header-filter='velto/.*\.(h|cpp)$' "$work/$1.cpp" -- -std=c++20 "${flags[@]}" >"$work/$1.log" 2>&1; then
    grep -E '(error|warning):' "$work/$1.log" || tail -n 3 "$work/$1.log"
    return 1
  fi
}

mapfile -t files < <(chosen)
echo "tidy: ${#files[@]} files"
rm -f "$work"/*.cpp
for file in "${files[@]}"; do
  subsystem=${file#velto/}
  echo "#include \"$PWD/$file\"" >>"$work/${subsystem%%/*}.cpp"
done

failed=0
running=()
for unit in $(ls -S "$work" | grep '\.cpp$'); do
  check "${unit%.cpp}" &
  running+=($!)
  while [ "$(jobs -rp | wc -l)" -ge "$(nproc)" ]; do wait -n || true; done
done
for job in "${running[@]}"; do wait "$job" || failed=1; done
[ "$failed" -ne 0 ] || [ -n "$(git status --porcelain velto .clang-tidy 2>&1)" ] || git rev-parse HEAD >"$work/passed"
exit "$failed"
