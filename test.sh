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

# Sets `consumo` to the seconds of processor time of everything that this shell has waited for so far. A subshell tells
# its own.
consumo=0
leggi_consumo() {
  local tempi=$registri/consumo.$BASHPID
  times >"$tempi"
  consumo=$(awk 'NR == 2 { for (i = 1; i <= 2; i++) { split($i, t, /[ms]/); s += t[1] * 60 + t[2] } printf "%d", s }' "$tempi")
  rm -f "$tempi"
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

# Parts that run side by side, each by a short name, with its process, its title and the second of its beginning.
declare -A corsie=() titoli=() inizi=()

# avvia NAME NICENESS TITLE COMMAND...: begins a part in a process group of its own, by which it can be ended with all that
# it has started. What it prints is shown when it is over.
avvia() {
  local nome=$1 cortesia=$2 titolo=$3
  shift 3
  chiudi_parte
  titoli[$nome]=$titolo
  inizi[$nome]=$SECONDS
  set -m
  corsia "$cortesia" "$titolo" "$@" >"$registri/$nome.corsia" 2>&1 </dev/null &
  set +m
  corsie[$nome]=$!
}

corsia() {
  local cortesia=$1 titolo=$2 inizio=$SECONDS
  shift 2
  renice -n "$cortesia" -p "$BASHPID" >/dev/null
  "$@"
  leggi_consumo
  printf '%s\t%s\t%s\n' "$((SECONDS - inizio))" "$consumo" "$titolo +" >>"$parti"
}

# aspetta NAME...: goes on when these parts are over. Whichever part fails meanwhile ends the others and the run.
aspetta() {
  local nome altra vive
  for nome in "$@"; do
    while [ -n "${corsie[$nome]:-}" ]; do
      vive=" $(jobs -rp | tr '\n' ' ') "
      for altra in "${!corsie[@]}"; do
        [[ $vive = *" ${corsie[$altra]} "* ]] || chiudi_corsia "$altra"
      done
      [ -z "${corsie[$nome]:-}" ] || sleep 0.2
    done
  done
}

chiudi_corsia() {
  local esito=0
  wait "${corsie[$1]}" || esito=$?
  unset "corsie[$1]"
  [ "$esito" -eq 0 ] || ferma
  printf '\n==== %s (da %d a %d s)\n' "${titoli[$1]}" "${inizi[$1]}" "$SECONDS"
  cat "$registri/$1.corsia"
  [ "$esito" -eq 0 ] || { printf '\n==== guasto: %s (esito %d)\n' "${titoli[$1]}" "$esito"; exit 1; }
}

# Nothing that was begun outlives this script.
ferma() {
  local pid attesa
  for pid in "${corsie[@]}"; do
    kill -TERM -- "-$pid" 2>/dev/null || true
  done
  for pid in "${corsie[@]}"; do
    for ((attesa = 0; attesa < 100; attesa++)); do
      kill -0 -- "-$pid" 2>/dev/null || continue 2
      sleep 0.1
    done
    kill -KILL -- "-$pid" 2>/dev/null || true
  done
  corsie=()
}
trap ferma EXIT
trap 'exit 129' HUP
trap 'exit 130' INT
trap 'exit 143' TERM

# costruisci PRESET [TARGET...]: configures and builds; a quiet build shows its log only when it fails.
costruisci() {
  local preset=$1
  shift
  cmake --preset "$preset" -S . >"$registri/$preset-configura.log" 2>&1 || { cat "$registri/$preset-configura.log"; exit 1; }
  cmake --build --preset "$preset" -j "$processori" ${1:+--target "$@"} >"$registri/$preset.log" 2>&1 ||
    { tail -n 80 "$registri/$preset.log"; exit 1; }
  tail -n 1 "$registri/$preset.log"
}

# prova PRESET [CTEST_ARGUMENT...]: runs a suite. A suite without tests is a failure. Three times as many entries as
# there are processors run at a time, since many wait for servers.
prova() {
  local preset=$1 registro
  shift
  registro=$registri/$preset-prove.log
  ctest --preset "$preset" -j "$((processori * 3))" --no-tests=error --output-on-failure "$@" >"$registro" 2>&1 ||
    { sed -n '/Failed/,$p' "$registro" | tail -n 400; guasti "$registro"; exit 1; }
  conto "$preset"
  saltate "$preset" "$registro"
}

# saltate PRESET LOG: what did not run, also within a program that is one entry of the runner, which does not count it.
saltate() {
  local cartella=build/$1 nomi
  [ "$1" != release ] || cartella=build
  nomi=$({
    sed -nE 's/^\t *[0-9]+ - (.*) \((Skipped|Not Run)\)$/\1/p' "$2"
    sed -nE 's/^\[  SKIPPED \] (.*) \([0-9]+ ms\)$/\1/p' "$cartella/Testing/Temporary/LastTest.log"
  } | sort -u)
  [ -z "$nomi" ] || printf 'saltate: %d\n%s\n' "$(wc -l <<<"$nomi")" "  ${nomi//$'\n'/$'\n'  }"
}

# conto PRESET: the runner's own count.
conto() {
  grep -E '^[0-9]+% tests passed' "$registri/$1-prove.log" | tail -n 1
}

esamina() {
  scripts/tidy.py --self-test
  scripts/tidy.py build
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
  if grep -q ' +$' "$parti"; then
    echo "  le parti col + corrono insieme: i loro secondi si sovrappongono"
  fi
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
  conto debug
  exit 0
fi

passo "compilazione: asan"
costruisci asan
# Half of the suite's time is waiting. What only computes goes on beside it, behind everything that has a test's priority.
avvia suite 0 "prove: AddressSanitizer e UndefinedBehaviorSanitizer" prova asan -LE senza_chiamante
avvia costruzione 19 "compilazione: release" costruisci release prove_ottimizzate
aspetta costruzione
avvia tidy 19 "clang-tidy" esamina
aspetta suite
avvia tempi 0 "prove: tempi e lavoro intero, ottimizzati" prova release -L ottimizzata
aspetta tempi tidy
resoconto

if [ "$modo" = tutto ]; then
  [ "$(awk -F'\t' '{ s += $2 } END { print s + 0 }' "$parti")" -le $((tempo_previsto * 2)) ] ||
    { echo "il cancello supera i $((tempo_previsto * 2)) s di processore previsti" >&2; exit 1; }
  scripts/everything.sh
fi

printf '\n==== fine (%d s)\n' "$SECONDS"
echo "ottimizzate: $(conto release)"
conto asan
