#!/usr/bin/env bash
# Opens the list that a test has saved (RowsTakenAway.AreWrittenAsAFileForASpreadsheet) in a spreadsheet, in Italian and with
# formulas allowed, and looks at its cells: no text is a formula, every amount is that number and every date that day.
#   scripts/spreadsheet.sh [BUILD]   build directory (build)
set -euo pipefail
cd "$(dirname "$0")/.."
build=$(realpath "${1:-build}")
scripts/dependencies.sh --foglio

"$build/bin/griglia_test" --gtest_brief=1 --gtest_filter=RowsTakenAway.AreWrittenAsAFileForASpreadsheet
saved=$(find "$build" -name foglio.csv -newer "$build/bin/griglia_test" | head -n 1)
[ -n "$saved" ] || { echo "spreadsheet: la prova non ha scritto il file" >&2; exit 1; }
work=$build/foglio
rm -rf "$work"
mkdir -p "$work"
# Semicolon, quotes, UTF-8, from the first line, Italian, special numbers told, formulas evaluated.
soffice "-env:UserInstallation=file://$work/profilo" --headless \
  "--infilter=Text - txt - csv (StarCalc):59,34,76,1,,1040,false,true,false,false,false,0,true" \
  --convert-to fods --outdir "$work" "$saved" >"$work/soffice.log" 2>&1 || { cat "$work/soffice.log"; exit 1; }
python3 scripts/spreadsheet.py "$saved" "$work/foglio.fods"
