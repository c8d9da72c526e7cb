#!/usr/bin/env bash
# Runs clang-tidy, as many files at a time as there are processors. Usage: tidy.sh [BUILD_DIR [FOLDER...]]
# BUILD_DIR holds compile_commands.json of a build with clang; without folders the product is looked at, src and app. A file that passed is not looked at again until it, any
# header, the configuration or clang-tidy itself changes.
set -euo pipefail
cd "$(dirname "$0")/.."

build=${1:-build/asan}
shift || true
[ $# -gt 0 ] || set -- src app
[ -f "$build/compile_commands.json" ] || { echo "tidy: manca $build/compile_commands.json" >&2; exit 1; }
timbri=build/tidy
mkdir -p "$timbri"

comune=$({
  clang-tidy-14 --version
  cat .clang-tidy
  find include "$@" src -type f \( -name '*.hpp' -o -name '*.h' \) -print0 | LC_ALL=C sort -z | xargs -0 sha256sum
} | sha256sum)

impronta() { { echo "$comune"; sha256sum <"$1"; } | sha256sum | cut -c1-40; }

da_vedere=()
totale=0
while IFS= read -r file; do
  totale=$((totale + 1))
  [ -e "$timbri/$(impronta "$file")" ] || da_vedere+=("$file")
done < <(find "$@" -name '*.cpp' | LC_ALL=C sort)
[ "$totale" -gt 0 ] || { echo "tidy: nessun file da controllare" >&2; exit 1; }

controlla_uno() {
  local uscita
  if uscita=$(clang-tidy-14 --quiet -p "$1" "$2" 2>/dev/null); then
    : >"$3"
  else
    printf '%s\n' "$uscita"
    echo "tidy: $2 da correggere"
    return 1
  fi
}
export -f controlla_uno

esito=0
if [ ${#da_vedere[@]} -gt 0 ]; then
  for file in "${da_vedere[@]}"; do
    printf '%s\0%s\0%s\0' "$build" "$file" "$timbri/$(impronta "$file")"
  done | xargs -0 -n 3 -P "$(nproc)" bash -c 'controlla_uno "$@"' _ || esito=1
fi
[ "$esito" -eq 0 ] && echo "tidy: $totale file a posto (${#da_vedere[@]} guardati ora)"
exit "$esito"
