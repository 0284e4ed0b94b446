# Read by the checks: the C++ files that people write, one a line, those not committed yet included.
sources() {
  if git rev-parse --git-dir >/dev/null 2>&1; then
    git ls-files --cached --others --exclude-standard "$@"
  else
    find src tools examples tests bench fuzz -type f
  fi | grep -E '\.(h|cpp)$' | while IFS= read -r file; do [ ! -f "$file" ] || echo "$file"; done
}
