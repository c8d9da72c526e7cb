#!/usr/bin/env bash
# Runs the fuzzer's programs, two at a time, and prints how many executions each one reached.
#   scripts/fuzz.sh SECONDS [CORPUS_DIR]
# They begin with the kept inputs of tests/fuzz; what they find goes to CORPUS_DIR (a folder of its own below
# build/fuzz where none is given) and is thrown away in the latter case. A crash, a leak, a hang or a rule that does
# not hold fails the run; its input stays in build/fuzz/reperti.
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=${1:?uso: scripts/fuzz.sh SECONDI [CARTELLA]}
base=build/fuzz
corpus=${2:-$base/raccolta}
[ -n "${2:-}" ] || rm -rf "$corpus"
mkdir -p "$base/registri" "$base/reperti" "$corpus"

cmake --preset fuzz -S . >"$base/registri/configura.log" 2>&1 || { cat "$base/registri/configura.log"; exit 1; }
cmake --build --preset fuzz -j "$(nproc)" >"$base/registri/compila.log" 2>&1 || { tail -n 60 "$base/registri/compila.log"; exit 1; }

# The programs make and remove many small files: in memory where there is such a place.
[ ! -w /dev/shm ] || export TMPDIR=/dev/shm
export ASAN_OPTIONS=detect_leaks=1
export LSAN_OPTIONS=suppressions=$PWD/tests/lsan.supp:print_suppressions=0
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1

play() {
  local name=$1 seconds=$2 base=$3 corpus=$4
  mkdir -p "$corpus/$name" "$base/reperti/$name"
  "$base/bin/fuzz_$name" "$corpus/$name" "tests/fuzz/corpora/$name" -max_total_time="$seconds" -timeout=20 \
    -max_len=65536 -rss_limit_mb=2048 -dict="tests/fuzz/dizionari/$name.dict" -artifact_prefix="$base/reperti/$name/" \
    -print_final_stats=1 >"$base/registri/$name.log" 2>&1
}
export -f play

targets=(blocco comando connessione conversioni nota noti richiesta risposta sftp)
status=0
printf '%s\n' "${targets[@]}" | xargs -P 2 -I {} bash -c 'play "$@"' _ {} "$seconds" "$base" "$corpus" || status=1

total=0
for name in "${targets[@]}"; do
  log=$base/registri/$name.log
  runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
  edges=$(grep -oE 'cov: [0-9]+' "$log" | tail -n 1 | cut -d' ' -f2 || true)
  printf 'fuzz %-12s %10s esecuzioni  %6s rami  %s\n' "$name" "${runs:-0}" "${edges:-0}" \
    "$(grep -q '^SUMMARY' "$log" && echo GUASTO || echo 'nessun guasto')"
  if [ -z "$runs" ] || grep -q '^SUMMARY' "$log"; then
    tail -n 30 "$log"
    status=1
  fi
  total=$((total + ${runs:-0}))
done
echo "fuzz: $total esecuzioni in $seconds s per bersaglio"
exit "$status"
