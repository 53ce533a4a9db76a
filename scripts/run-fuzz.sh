#!/usr/bin/env bash
# Usage: scripts/run-fuzz.sh FUZZ_TREE SECONDS
# Runs every libFuzzer target of the tree for SECONDS each. A target's seed
# inputs, when it has any, live in <source dir>/fuzz_corpus/<target>/.
set -u
tree=$1
seconds=$2
root=$(cd "$(dirname "$0")/.." && pwd)
status=0
while read -r target; do
  [ -n "$target" ] || continue
  exe=$(find "$tree" -type f -name "$target" -perm -u+x | head -n1)
  if [ -z "$exe" ]; then
    echo "fuzz: $target was not built" >&2
    status=1
    continue
  fi
  corpus="$tree/corpus/$target"
  mkdir -p "$corpus"
  seeds=$(find "$root" -path "$root/build" -prune -o -type d -path "*/fuzz_corpus/$target" -print | head -n1)
  echo "== fuzz $target for ${seconds}s =="
  if ! "$exe" -max_total_time="$seconds" -print_final_stats=1 "$corpus" ${seeds:+"$seeds"} \
       >"$tree/$target.log" 2>&1; then
    echo "fuzz: $target FAILED; see $tree/$target.log" >&2
    tail -30 "$tree/$target.log" >&2
    status=1
  else
    grep -E 'stat::number_of_executed_units|Done' "$tree/$target.log" | tail -2
  fi
done <"$tree/fuzz-targets.txt"
exit $status
