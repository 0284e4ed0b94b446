#!/usr/bin/env bash
# The page scripts and their tests, looked through by the type checker: names that nobody declared, wrong arguments,
# what is never used.
set -euo pipefail
for project in velto/resources tests/scripts; do
  tsc --project "$project/jsconfig.json"
done
echo "The page scripts' names and types agree."
