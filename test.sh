#!/usr/bin/env bash
# Installs what is missing, builds and runs the checks and the tests.
#   ./test.sh           the gate: cheap checks, the whole suite under AddressSanitizer and UndefinedBehaviorSanitizer,
#                       the tests of timing and of the whole job on an optimised build, and clang-tidy
#   ./test.sh --veloce  the cheap checks, and the suite without sanitizers
#   ./test.sh --tutto   the gate, and then all that takes longer or is random; the gate's budget binds here
#   ./test.sh --affidabilita [SECTION...]  the figures of scripts/reliability.sh, and nothing else
set -euo pipefail
cd "$(dirname "$0")"

modo=cancello
case "${1:-}" in
  "") ;;
  --veloce | --tutto) modo=${1#--} ;;
  --affidabilita) modo=affidabilita; shift ;;
  *) echo "uso: ./test.sh [--veloce | --tutto | --affidabilita [SEZIONE...]]" >&2; exit 2 ;;
esac

# Seconds of the gate's budget on two idle processors, from nothing compiled.
tempo_previsto=720

processori=$(nproc)
registri=build/registri
parti=$registri/parti

# Sets `consumo` to the seconds of processor time of everything that this shell has waited for so far. A subshell would
# tell its own.
consumo=0
leggi_consumo() {
  times >"$registri/consumo"
  consumo=$(awk 'NR == 2 { for (i = 1; i <= 2; i++) { split($i, t, /[ms]/); s += t[1] * 60 + t[2] } printf "%d", s }' \
    "$registri/consumo")
}

nome_parte=
chiudi_parte() {
  [ -n "$nome_parte" ] || return 0
  leggi_consumo
  printf '%s\t%s\t%s\n' "$((SECONDS - inizio_parte))" "$((consumo - consumo_parte))" "$nome_parte" >>"$parti"
  nome_parte=
}
passo() {
  chiudi_parte
  nome_parte=$1
  inizio_parte=$SECONDS
  leggi_consumo
  consumo_parte=$consumo
  printf '\n==== %s (%d s)\n' "$1" "$SECONDS"
}

# costruisci PRESET [TARGET...]: configures and builds; a quiet build shows its log only when it fails.
costruisci() {
  local preset=$1
  shift
  cmake --preset "$preset" -S . >"$registri/$preset-configura.log" 2>&1 || { cat "$registri/$preset-configura.log"; exit 1; }
  cmake --build --preset "$preset" -j "$processori" ${1:+--target "$@"} >"$registri/$preset.log" 2>&1 ||
    { tail -n 80 "$registri/$preset.log"; exit 1; }
  tail -n 1 "$registri/$preset.log"
}

# prova PRESET [CTEST_ARGUMENT...]: runs a suite and keeps the runner's own count in `conto`. A suite without tests is a
# failure. Twice as many entries as there are processors run at a time, since many wait for servers.
conto=
prova() {
  local preset=$1 registro
  shift
  registro=$registri/$preset-prove.log
  ctest --preset "$preset" -j "$((processori * 2))" --no-tests=error --output-on-failure "$@" >"$registro" 2>&1 ||
    { sed -n '/Failed/,$p' "$registro" | tail -n 400; guasti "$registro"; exit 1; }
  conto=$(grep -E '^[0-9]+% tests passed' "$registro" | tail -n 1)
  echo "$conto"
  sed -nE 's/^The following tests did not run:/saltate:/p; s/^\t *[0-9]+ - (.*) \((Skipped|Not Run)\)$/  \1/p' "$registro"
}

# What failed and how, in a few lines: the last thing that one reads.
guasti() {
  printf '\n==== guasti\n'
  # A test that was given up for its time has no such line, and there may be more than are wanted.
  { grep -aE -A 6 ': Failure$|ERROR: (Address|Leak)Sanitizer|: runtime error: ' "$1" || true; } |
    cut -c 1-200 | sed -n '1,80p'
  sed -n '/^The following tests FAILED/,$p' "$1"
}

piu_lente() {
  cat "$registri"/*-prove.log | sed -nE 's/^.*Test +#[0-9]+: ([^ ]+) \.*.* +([0-9.]+) sec.*$/\2 \1/p' | sort -rn |
    awk 'NR <= 5 { printf "  %6.1f s  %s\n", $1, $2 }'
}

resoconto() {
  chiudi_parte
  printf '\n==== parti, secondi e secondi di processore\n'
  awk -F'\t' '{ printf "  %5d s  %5d s  %s\n", $1, $2, $3 }' "$parti"
  printf 'le cinque parti più lente:\n'
  sort -rn "$parti" | awk -F'\t' 'NR <= 5 { printf "  %5d s  %s\n", $1, $3 }'
  printf 'le cinque prove più lente:\n'
  piu_lente
  if [ "$SECONDS" -gt "$tempo_previsto" ]; then
    echo "oltre il tempo previsto: $SECONDS s invece di $tempo_previsto s"
  fi
}

mkdir -p "$registri"
: >"$parti"
passo "dipendenze"
rm -f "$registri"/*-prove.log
scripts/dependencies.sh

if [ "$modo" = affidabilita ]; then
  passo "compilazione: release"
  costruisci release
  exec scripts/reliability.sh "$@"
fi

passo "controlli"
scripts/checks.sh

if [ "$modo" = veloce ]; then
  passo "compilazione: debug"
  costruisci debug
  passo "prove: debug"
  prova debug
  resoconto
  echo "$conto"
  exit 0
fi

passo "compilazione: asan"
costruisci asan
passo "prove: AddressSanitizer e UndefinedBehaviorSanitizer"
prova asan
sanitizer=$conto
passo "compilazione: release"
costruisci release prove_ottimizzate
passo "prove: tempi e lavoro intero, ottimizzati"
prova release -L ottimizzata
ottimizzate=$conto
passo "clang-tidy"
scripts/tidy.py --self-test
scripts/tidy.py build
resoconto

if [ "$modo" = tutto ]; then
  [ "$(awk -F'\t' '{ s += $2 } END { print s + 0 }' "$parti")" -le $((tempo_previsto * 2)) ] ||
    { echo "il cancello supera i $((tempo_previsto * 2)) s di processore previsti" >&2; exit 1; }
  scripts/everything.sh
fi

printf '\n==== fine (%d s)\n' "$SECONDS"
echo "ottimizzate: $ottimizzate"
echo "$sanitizer"
