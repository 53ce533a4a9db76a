#!/usr/bin/env bash
# Usage: scripts/line-count.sh
# Counts non-blank, non-comment lines of C and C++ sources under version
# control, split into test code (*_test.*, test support and fixtures) and
# the rest (product, stand-ins, demo, benchmarks, fuzz targets), for the
# whole tree and for each top-level folder, with the ratio tests / rest.
set -u
cd "$(dirname "$0")/.." || exit 2
pattern='(_test\.|_tests\.|test_support|test_util|_test_|/testing/|fixture)'

count() {  # reads file names on stdin, prints the counted lines
  local n=0 f
  while IFS= read -r f; do
    [ -f "$f" ] || continue
    # Blank lines, // comments and the lines of /* ... */ blocks are not code.
    n=$((n + $(awk '
      /^[[:space:]]*$/ { next }
      inblock { if ($0 ~ /\*\//) inblock = 0; next }
      /^[[:space:]]*\/\*/ { if ($0 !~ /\*\//) inblock = 1; next }
      /^[[:space:]]*\/\// { next }
      { c++ } END { print c + 0 }' "$f")))
  done
  echo "$n"
}

files=$(git ls-files -co --exclude-standard | grep -E '\.(cpp|cc|c|h|hpp)$' | grep -v '^build/')
report() {  # name, file list
  local tests rest pct
  tests=$(printf '%s\n' "$2" | grep -E "$pattern" | count)
  rest=$(printf '%s\n' "$2" | grep -v -E "$pattern" | grep -v '^$' | count)
  if [ "$rest" -gt 0 ]; then pct=$((100 * tests / rest)); else pct=0; fi
  printf '%-22s %7d %7d %5d%%\n' "$1" "$tests" "$rest" "$pct"
}
printf '%-22s %7s %7s %6s\n' folder tests rest ratio
for top in $(printf '%s\n' $files | cut -d/ -f1 | grep -v '\.' | sort -u); do
  report "$top/" "$(printf '%s\n' $files | grep "^$top/")"
done
report "whole tree" "$files"
