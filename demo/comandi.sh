#!/usr/bin/env bash
# Plays one command of each kind that has no screen, on a demonstration of its own in a virtual display, and prints
# request, reply, result and rows before and after. Message boxes are closed with keys.
#   demo/comandi.sh [DIR]      DIR is for the demonstration (build/dimostrazione_comandi)
#   LUMOSCAD_BIN               directory of the programs (build/bin beside this directory)
set -euo pipefail

radice=$(CDPATH='' cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.." && pwd)
export LUMOSCAD_BIN=${LUMOSCAD_BIN:-$radice/build/bin}
base=${1:-$radice/build/dimostrazione_comandi}
mkdir -p -- "$base"
base=$(CDPATH='' cd -- "$base" && pwd)

"$radice/demo/prepara.sh" "$base"
sqlite3 -bail "$base/contabilita.sqlite" <"$radice/demo/comandi.sql"
# shellcheck source=/dev/null
. "$base/ambiente.sh"

processes=()
termina() {
  for ((i = ${#processes[@]} - 1; i >= 0; i--)); do kill "${processes[i]}" 2>/dev/null || true; done
}
trap termina EXIT
if [ -z "${XDG_RUNTIME_DIR:-}" ]; then
  export XDG_RUNTIME_DIR=$base/esecuzione
  [ -d "$XDG_RUNTIME_DIR" ] || mkdir -m 700 "$XDG_RUNTIME_DIR"
fi
# shellcheck source=scripts/virtual_display.sh
. "$radice/scripts/virtual_display.sh"
start_virtual_display 1280x800 "$base"

registro=$base/host/registro/VB0001.log
righe() {
  sqlite3 -separator '  ' "$base/contabilita.sqlite" "
    SELECT 'evento', EVENTOCONTABILEKEY, 'tipo ' || TIPOEVENTO, 'sospesa ' || SOSPESA, coalesce(DATASCADENZA, '-')
      FROM EVENTOCONTABILE WHERE EVENTOCONTABILEKEY > 900000;
    SELECT 'movimento', MOVIMENTOKEY, TIPOMOVIMENTO, SERIE, NUMERO FROM MOVIMENTOCONTABILE WHERE MOVIMENTOKEY > 900000;
    SELECT 'errore', ERROREKEY, FILEXML FROM ERRORE"
}

# Presses Return in every box until the program ends: its boxes say what the reply below says.
chiudi_messaggi() {
  local finestra
  while kill -0 "$1" 2>/dev/null; do
    finestra=$(xdotool search --onlyvisible --name '^LumoScad$' 2>/dev/null | tail -n 1 || true)
    if [ -n "$finestra" ] && xdotool windowactivate --sync "$finestra" 2>/dev/null; then
      xdotool key Return 2>/dev/null || true
    fi
    sleep 0.2
  done
}

mostra_chiamata() {
  if [ ! -s "$registro" ]; then
    echo "richiesta: nessuna"
    return
  fi
  awk -F'\t' '{
    printf "richiesta: %d parametri:", $3
    for (i = 0; i < $3; i++) printf " \"%s\"", $(4 + i)
    printf "\nrisposta: %s \"%s\"\n", $1 == "ACCETTATA" ? "MESSAGGIO" : "ERRORE", $2
  }' "$registro"
}

# gioca RESULT COMMAND: fails when the command answers anything else.
gioca() {
  local atteso=$1 comando=$2 program risultato
  printf '\n==== %s\n' "$comando"
  : >"$registro"
  righe >"$base/righe_prima.txt"
  printf '%s\n' "$comando -DB2SOURCE CONTABILITA -DB2USER demo -DB2PASS demo -DB2SCHEMA main" |
    "$LUMOSCAD_BIN/lumoscad" - >"$base/risultato.txt" 2>"$base/errori.txt" &
  program=$!
  processes+=("$program")
  chiudi_messaggi "$program"
  wait "$program" || true
  unset 'processes[-1]'
  righe >"$base/righe_dopo.txt"
  cat "$base/errori.txt" >&2
  mostra_chiamata
  risultato=$(cat "$base/risultato.txt")
  echo "risultato: \"$risultato\""
  echo "righe (- prima, + dopo):"
  { diff -U0 "$base/righe_prima.txt" "$base/righe_dopo.txt" || true; } | grep -E '^[-+][a-z]' || echo "(nessun cambiamento)"
  if [ "$risultato" != "$atteso" ]; then
    echo "comandi.sh: il risultato doveva essere \"$atteso\"" >&2
    exit 1
  fi
}

gioca '' '-T TEST'
gioca '' '-T SOSPESO /A -H locale -D 01 -C 20100001 -P AB   123'
gioca '' '-T SOSPESO /D -H locale -D 01 -C 20100001 -P AB   123'
gioca '' '-T PRESUNTO /A -H locale -D 01 -S OC -A 06 -N 123 -E 2006'
gioca '' '-T PRESUNTO /D -H locale -D 01 -S OC -A 06 -N 123 -E 2006'
gioca error '-T SOSPESO /A -H locale -D 01 -C BLOCCATO -P AB   123'
gioca error '-T EXTRA /A -H locale -D 01 -S A -E 2006 -N 99'
gioca '' '-T EXTRA /A -H locale -D 01 -S A -E 2006 -N 15'
gioca '' '-T SOSPESO /A -H locale -D 01 -C 20100001 -P AB   123 -DEMO'
