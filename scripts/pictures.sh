#!/usr/bin/env bash
# Takes the pictures of the user guide again, on a demonstration of its own in a virtual display.
#   scripts/pictures.sh [DIR]  DIR takes the pictures (docs/immagini)
#   LUMOSCAD_BIN               directory of the programs and of the window tests (build/bin)
set -euo pipefail
cd "$(dirname "$0")/.."

export LUMOSCAD_BIN=${LUMOSCAD_BIN:-$PWD/build/bin}
# The same day every time, so that a picture changes only with its window.
export LUMOSCAD_DATA=2027-01-15
folder=${1:-docs/immagini}
base=build/immagini
mkdir -p "$folder" "$base"
for name in lumoscad lumoscad-genera VB0001 scadenzario_qt_test elenco_qt_test schermate_qt_test; do
  [ -x "$LUMOSCAD_BIN/$name" ] || { echo "immagini: manca il programma $LUMOSCAD_BIN/$name" >&2; exit 1; }
done

processes=()
stop() {
  for ((i = ${#processes[@]} - 1; i >= 0; i--)); do kill "${processes[i]}" 2>/dev/null || true; done
}
trap stop EXIT
if [ -z "${XDG_RUNTIME_DIR:-}" ]; then
  export XDG_RUNTIME_DIR=$PWD/$base/esecuzione
  [ -d "$XDG_RUNTIME_DIR" ] || mkdir -m 700 "$XDG_RUNTIME_DIR"
fi
# shellcheck source=scripts/virtual_display.sh
. scripts/virtual_display.sh
start_virtual_display 1280x800 "$base"
# shellcheck source=scripts/gestures.sh
. scripts/gestures.sh

# Starts the program with this command on fresh data, which it leaves in `demonstration`.
start() {
  demonstration=$base/dimostrazione
  demo/prepara.sh "$demonstration" >/dev/null
  # shellcheck source=/dev/null
  . "$demonstration/ambiente.sh"
  printf '%s\n' "$1 -H locale -D 01 -DB2SOURCE CONTABILITA -DB2SCHEMA main" |
    "$LUMOSCAD_BIN/lumoscad" - >"$demonstration/risultato.txt" &
  program=$!
  processes+=("$program")
}

# The program ends, and answers $1.
finish() {
  wait "$program" || true
  unset 'processes[-1]'
  [ "$(cat "$demonstration/risultato.txt")" = "$1" ] || { echo "immagini: il risultato non è \"$1\"" >&2; exit 1; }
}

credits() {
  start "-T BANCA /CREDITI"
  scripts/play_credits.sh "$PWD/$base/crediti.png" "$program"
  finish ""
  cp "$base/crediti.png" "$folder/crediti.png"
}

# A document of two rows gets the bank at the top, the next one loses its own.
presumed() {
  local window
  start "-T BANCA /PRESUNTI -TIPOMOVIMENTI V -B TUTTE"
  window=$(wait_for_window "LumoScad - Banca dei documenti presunti")
  sleep 1
  repeat Down 5
  keys alt+n Down Down Down Tab space
  repeat Down 3
  keys Right F2 Home Return
  photograph "$window" "$folder/presunti.png"
  keys alt+a
  finish "closed"
}

# Two rows get the date at the top, a third one a date of its own that is being typed.
deliveries() {
  local window
  start "-T CONSEGNA /PRESUNTI -TIPOMOVIMENTI V -B TUTTE"
  window=$(wait_for_window "LumoScad - Date di consegna")
  sleep 1
  keys alt+n
  type_text 20/03/27
  keys Tab space Down Down space Down Right F2
  type_text 310327
  photograph "$window" "$folder/consegna.png"
  keys Escape alt+a
  finish "closed"
}

# What drops down: the calendar of a date cell, and the banks while somebody types for one.
popups() {
  start "-T BANCA /CREDITI"
  wait_for_window "LumoScad - Scadenze e banche dei clienti" >/dev/null
  sleep 1
  keys Right F2 F4 Next
  photograph_with_popups "$folder/calendario.png"
  keys Escape Escape Right Right F2
  type_text cred
  photograph_with_popups "$folder/banca.png"
  keys Escape Escape alt+a
  finish "closed"
}

# A filter that selects no test is no failure of the program: the picture must be there.
item_window() {
  rm -f "$folder/scadenzario.png"
  QT_QPA_PLATFORM=offscreen LUMOSCAD_IMMAGINE=$(realpath "$folder")/scadenzario.png \
    "$LUMOSCAD_BIN/scadenzario_qt_test" --gtest_filter=ItemWindow.ShowsItsTextsWhole >/dev/null
  [ -s "$folder/scadenzario.png" ] || { echo "pictures.sh: manca scadenzario.png" >&2; return 1; }
}

# The list on every kind of desktop, with text of twice the size, on a screen of twice the scale, with long names and
# with no rows or very many; and its panel, the calendar and the help on each.
aspects() {
  local aspects twice
  mkdir -p "$folder/aspetti" "$base/doppio"
  aspects=$(realpath "$folder/aspetti")
  twice=$(realpath "$base/doppio")
  rm -f "$aspects"/*.png
  QT_QPA_PLATFORM=offscreen LUMOSCAD_ASPETTI=$aspects \
    "$LUMOSCAD_BIN/elenco_qt_test" --gtest_filter='Aspects/Looks.*' >/dev/null
  QT_QPA_PLATFORM=offscreen QT_SCALE_FACTOR=2 LUMOSCAD_ASPETTI=$twice \
    "$LUMOSCAD_BIN/elenco_qt_test" --gtest_filter='Aspects/Looks.*schermo_piccolo' >/dev/null
  QT_QPA_PLATFORM=offscreen LUMOSCAD_ASPETTI=$aspects \
    "$LUMOSCAD_BIN/schermate_qt_test" --gtest_filter='Aspects/PanelLooks.*' >/dev/null
  cp "$twice/schermo-piccolo.png" "$aspects/scala-doppia.png"
  [ "$(find "$aspects" -name '*.png' | wc -l)" -ge 23 ] || { echo "pictures.sh: mancano aspetti" >&2; return 1; }
}

aspects
credits
presumed
deliveries
popups
item_window
file "$folder"/*.png "$folder"/aspetti/*.png
