#!/usr/bin/env bash
# Runs the fuzzer's programs, two at a time, and prints how many executions each one reached.
#   scripts/fuzz.sh SECONDS [CORPUS_DIR]
# They begin with the kept inputs of tests/fuzz; what they find goes to CORPUS_DIR (a folder of its own below
# build/fuzz where none is given) and is thrown away in the latter case. A crash, a leak, a hang or a rule that does
# not hold fails the run; its input stays in build/fuzz/reperti.
set -euo pipefail
cd "$(dirname "$0")/.."

secondi=${1:?uso: scripts/fuzz.sh SECONDI [CARTELLA]}
base=build/fuzz
raccolta=${2:-$base/raccolta}
[ -n "${2:-}" ] || rm -rf "$raccolta"
mkdir -p "$base/registri" "$base/reperti" "$raccolta"

cmake --preset fuzz -S . >"$base/registri/configura.log" 2>&1 || { cat "$base/registri/configura.log"; exit 1; }
cmake --build --preset fuzz -j "$(nproc)" >"$base/registri/compila.log" 2>&1 || { tail -n 60 "$base/registri/compila.log"; exit 1; }

# The programs make and remove many small files: in memory where there is such a place.
[ ! -w /dev/shm ] || export TMPDIR=/dev/shm
export ASAN_OPTIONS=detect_leaks=1
export LSAN_OPTIONS=suppressions=$PWD/tests/lsan.supp:print_suppressions=0
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1

gioca() {
  local nome=$1 secondi=$2 base=$3 raccolta=$4
  mkdir -p "$raccolta/$nome" "$base/reperti/$nome"
  "$base/bin/fuzz_$nome" "$raccolta/$nome" "tests/fuzz/corpora/$nome" -max_total_time="$secondi" -timeout=20 \
    -max_len=65536 -rss_limit_mb=2048 -dict="tests/fuzz/dizionari/$nome.dict" -artifact_prefix="$base/reperti/$nome/" \
    -print_final_stats=1 >"$base/registri/$nome.log" 2>&1
}
export -f gioca

bersagli=(blocco comando connessione conversioni noti richiesta risposta sftp)
esito=0
printf '%s\n' "${bersagli[@]}" | xargs -P 2 -I {} bash -c 'gioca "$@"' _ {} "$secondi" "$base" "$raccolta" || esito=1

totale=0
for nome in "${bersagli[@]}"; do
  registro=$base/registri/$nome.log
  esecuzioni=$(sed -n 's/^stat::number_of_executed_units: *//p' "$registro")
  rami=$(grep -oE 'cov: [0-9]+' "$registro" | tail -n 1 | cut -d' ' -f2 || true)
  printf 'fuzz %-12s %10s esecuzioni  %6s rami  %s\n' "$nome" "${esecuzioni:-0}" "${rami:-0}" \
    "$(grep -q '^SUMMARY' "$registro" && echo GUASTO || echo 'nessun guasto')"
  if [ -z "$esecuzioni" ] || grep -q '^SUMMARY' "$registro"; then
    tail -n 30 "$registro"
    esito=1
  fi
  totale=$((totale + ${esecuzioni:-0}))
done
echo "fuzz: $totale esecuzioni in $secondi s per bersaglio"
exit "$esito"
