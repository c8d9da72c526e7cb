#!/usr/bin/env bash
# Builds with gcc's line counters, runs the tests and prints the line coverage of src/.
#   scripts/coverage.sh                 the whole suite; fails below 95 % of the lines
#   scripts/coverage.sh PROGRAM...      these test programs of build/copertura/bin alone
# The table of files goes to build/copertura/righe.txt, the lines that never ran to build/copertura/mancanti.txt.
set -euo pipefail
cd "$(dirname "$0")/.."

jobs=${LAVORI:-$(nproc)}
threshold=95
base=build/copertura
mkdir -p "$base"
cmake --preset copertura -S . >"$base/configura.log" 2>&1 || { cat "$base/configura.log"; exit 1; }
cmake --build --preset copertura -j "$jobs" ${1:+--target "$@"} >"$base/compila.log" 2>&1 || { tail -n 60 "$base/compila.log"; exit 1; }
find "$base" -name '*.gcda' -delete

status=0
if [ $# -gt 0 ]; then
  for program in "$@"; do
    "$base/bin/$program" --gtest_brief=1 >"$base/$program.log" 2>&1 || { tail -n 40 "$base/$program.log"; status=1; }
  done
else
  ctest --preset copertura -j "$jobs" --no-tests=error >"$base/prove.log" 2>&1 || { tail -n 60 "$base/prove.log"; status=1; }
  grep -E '^[0-9]+% tests passed' "$base/prove.log" || true
fi

gcovr --root . --filter 'src/' --object-directory "$base" \
  --print-summary --txt "$base/righe.txt" -j "$jobs" >"$base/riassunto.txt" 2>"$base/gcovr.log" ||
  { tail -n 20 "$base/gcovr.log"; exit 1; }
# A long name stands on a line of its own, before its figures.
awk 'NF == 1 { name = $1 } NF > 1 && $(NF - 1) ~ /%$/ && $NF !~ /%$/ { print (NF == 5 ? $0 : name " " $0) }' \
  "$base/righe.txt" >"$base/mancanti.txt"
grep '^lines:' "$base/riassunto.txt" | sed 's/^lines/copertura di src/'
# The threshold is the whole suite's.
if [ $# -eq 0 ] && ! awk -v threshold="$threshold" '/^lines:/ { found = 1; enough = $2 + 0 >= threshold }
  END { exit !(found && enough) }' "$base/riassunto.txt"; then
  echo "copertura: sotto il $threshold % delle righe"
  status=1
fi
exit "$status"
