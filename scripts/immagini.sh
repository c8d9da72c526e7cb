#!/usr/bin/env bash
# Takes the pictures of the user guide again, on a demonstration of its own in a virtual display.
#   scripts/immagini.sh [DIR]  DIR takes the pictures (docs/immagini)
#   LUMOSCAD_BIN               directory of the programs and of the window tests (build/bin)
set -euo pipefail
cd "$(dirname "$0")/.."

export LUMOSCAD_BIN=${LUMOSCAD_BIN:-$PWD/build/bin}
# The same day every time, so that a picture changes only with its window.
export LUMOSCAD_DATA=2027-01-15
cartella=${1:-docs/immagini}
base=build/immagini
mkdir -p "$cartella" "$base"
for nome in lumoscad lumoscad-genera VB0001 scadenzario_qt_test; do
  [ -x "$LUMOSCAD_BIN/$nome" ] || { echo "immagini: manca il programma $LUMOSCAD_BIN/$nome" >&2; exit 1; }
done

processi=()
termina() {
  for ((i = ${#processi[@]} - 1; i >= 0; i--)); do kill "${processi[i]}" 2>/dev/null || true; done
}
trap termina EXIT
if [ -z "${XDG_RUNTIME_DIR:-}" ]; then
  export XDG_RUNTIME_DIR=$PWD/$base/esecuzione
  [ -d "$XDG_RUNTIME_DIR" ] || mkdir -m 700 "$XDG_RUNTIME_DIR"
fi
# shellcheck source=scripts/schermo_virtuale.sh
. scripts/schermo_virtuale.sh
avvia_schermo_virtuale 1280x800 "$base"
# shellcheck source=scripts/gesti.sh
. scripts/gesti.sh

# Starts the program with this command on fresh data, which it leaves in `dimostrazione`.
avvia() {
  dimostrazione=$base/dimostrazione
  demo/prepara.sh "$dimostrazione" >/dev/null
  # shellcheck source=/dev/null
  . "$dimostrazione/ambiente.sh"
  printf '%s\n' "$1 -H locale -D 01 -DB2SOURCE CONTABILITA -DB2SCHEMA main" |
    "$LUMOSCAD_BIN/lumoscad" - >"$dimostrazione/risultato.txt" &
  programma=$!
  processi+=("$programma")
}

# The program ends, and answers $1.
finisci() {
  wait "$programma" || true
  unset 'processi[-1]'
  [ "$(cat "$dimostrazione/risultato.txt")" = "$1" ] || { echo "immagini: il risultato non è \"$1\"" >&2; exit 1; }
}

crediti() {
  avvia "-T BANCA /CREDITI"
  scripts/gioca_crediti.sh "$PWD/$base/crediti.png" "$programma"
  finisci ""
  cp "$base/crediti.png" "$cartella/crediti.png"
}

# A document of two rows gets the bank at the top, the next one loses its own.
presunti() {
  local finestra
  avvia "-T BANCA /PRESUNTI -TIPOMOVIMENTI V -B TUTTE"
  finestra=$(aspetta_finestra "LumoScad - Banca dei documenti presunti")
  sleep 1
  ripeti Down 5
  tasti alt+n Down Down Down Tab space
  ripeti Down 3
  tasti Right F2 Home Return
  fotografa "$finestra" "$cartella/presunti.png"
  tasti alt+a
  finisci "closed"
}

# Two rows get the date at the top, a third one a date of its own that is being typed.
consegna() {
  local finestra
  avvia "-T CONSEGNA /PRESUNTI -TIPOMOVIMENTI V -B TUTTE"
  finestra=$(aspetta_finestra "LumoScad - Date di consegna")
  sleep 1
  tasti alt+n
  digita 20/03/27
  tasti Tab space Down Down space Down Right F2
  digita 310327
  fotografa "$finestra" "$cartella/consegna.png"
  tasti Escape alt+a
  finisci "closed"
}

# A filter that selects no test is no failure of the program: the picture must be there.
scadenzario() {
  rm -f "$cartella/scadenzario.png"
  QT_QPA_PLATFORM=offscreen LUMOSCAD_IMMAGINE=$(realpath "$cartella")/scadenzario.png \
    "$LUMOSCAD_BIN/scadenzario_qt_test" --gtest_filter=ItemWindow.ShowsItsTextsWhole >/dev/null
  [ -s "$cartella/scadenzario.png" ] || { echo "immagini.sh: manca scadenzario.png" >&2; return 1; }
}

crediti
presunti
consegna
scadenzario
file "$cartella"/*.png
