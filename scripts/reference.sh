#!/usr/bin/env bash
# Puts together what the public headers and the platform's interfaces say of themselves, in build/riferimento. In the public
# headers a declaration without a word is an error; in both a comment that is ill-formed, or names what is not there.
set -euo pipefail
cd "$(dirname "$0")/.."

command -v doxygen >/dev/null || { echo "riferimento: manca doxygen" >&2; exit 1; }

# describe NAME FOLDER UNDOCUMENTED
describe() {
  local folder=build/riferimento/$1
  mkdir -p "$folder"
  { cat docs/Doxyfile; printf 'OUTPUT_DIRECTORY=%s\nINPUT=%s\nWARN_IF_UNDOCUMENTED=%s\n' "$folder" "$2" "$3"; } | doxygen -
  echo "riferimento: $(find "$folder/html" -name '*.html' | wc -l) pagine in $folder/html, nessun avviso"
}
describe interfaccia include/lumoscad YES
describe piattaforma src/platform NO
