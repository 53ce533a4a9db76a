#!/usr/bin/env bash
# Usage: scripts/run-tests.sh LABEL NATIVE_TREE WINDOWS_TREE
# Runs the tests (or benchmarks) labelled LABEL in both trees, then prints one
# summary line of GoogleTest cases. Exits non-zero when anything failed.
set -u
label=$1
native=$2
windows=$3
here=$(cd "$(dirname "$0")" && pwd)
jobs=$(nproc)
status=0

rm -f "$native"/test-results/*.xml "$windows"/test-results/*.xml

if [ "$label" = bench ]; then
  args=(-L bench -V)
else
  args=(-L "$label" --output-on-failure)
fi

echo "== native tree (AddressSanitizer, UndefinedBehaviorSanitizer) =="
ctest --test-dir "$native" "${args[@]}" -j"$jobs" || status=1
echo "== windows tree (under Wine) =="
# Serially: the tests share one prefix, its registry and one desktop.
"$here/wine-session.sh" "$windows" ctest --test-dir "$windows" "${args[@]}" || status=1

if [ "$label" != bench ]; then
  cases=0
  failures=0
  for xml in "$native"/test-results/*.xml "$windows"/test-results/*.xml; do
    [ -f "$xml" ] || continue
    head=$(grep -m1 '<testsuites ' "$xml")
    t=$(sed -n 's/.* tests="\([0-9]*\)".*/\1/p' <<<"$head")
    f=$(sed -n 's/.* failures="\([0-9]*\)".*/\1/p' <<<"$head")
    d=$(sed -n 's/.* disabled="\([0-9]*\)".*/\1/p' <<<"$head")
    cases=$((cases + ${t:-0} - ${d:-0}))
    failures=$((failures + ${f:-0}))
  done
  [ "$status" -ne 0 ] && [ "$failures" -eq 0 ] && failures=1
  echo "tests: $((cases - failures)) passed, $failures failed"
fi
exit $status
