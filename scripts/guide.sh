#!/usr/bin/env bash
# Writes the guide's chapter of keys and gestures (docs/guida.md) anew from the table of gestures.
#   scripts/guide.sh
#   LUMOSCAD_BIN  directory of the test programs (build/bin)
set -euo pipefail
cd "$(dirname "$0")/.."

program=${LUMOSCAD_BIN:-$PWD/build/bin}/regole_test
[ -x "$program" ] || { echo "guida: manca il programma $program" >&2; exit 1; }
# A filter that selects no test is no failure of the program.
LUMOSCAD_SCRIVI_GUIDA=1 "$program" --gtest_filter=TableOfGestures.IsTheChapterOfTheGuide |
  grep 'PASSED.*1 test' >/dev/null || { echo "guida: il capitolo non è stato scritto" >&2; exit 1; }
git diff --stat -- docs/guida.md
