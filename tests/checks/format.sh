#!/usr/bin/env bash
# Every C++ file is formatted by .clang-format; scripts/format does it.
set -euo pipefail
. "$(dirname "$0")/sources.sh"

if ! sources | xargs -P "$(nproc)" -n 20 clang-format --dry-run -Werror --ferror-limit=1; then
  echo "scripts/format formats these files" >&2
  exit 1
fi
