#!/usr/bin/env bash
# Installs what is missing, builds and runs every check and every test.
#   ./test.sh           everything
#   ./test.sh --veloce  only the release build and its tests
#   ./test.sh --affidabilita [SECTION...]  the figures of scripts/affidabilita.sh, and nothing else
set -euo pipefail
cd "$(dirname "$0")"

veloce=no
affidabilita=no
case "${1:-}" in
  "") ;;
  --veloce) veloce=si ;;
  --affidabilita) affidabilita=si; shift ;;
  *) echo "uso: ./test.sh [--veloce | --affidabilita [SEZIONE...]]" >&2; exit 2 ;;
esac

processori=$(nproc)
registri=build/registri
passo() { printf '\n==== %s (%d s)\n' "$1" "$SECONDS"; }

# Configures and builds a preset; a quiet build shows its log only when it fails.
costruisci() {
  cmake --preset "$1" -S . >"$registri/$1-configura.log" 2>&1 || { cat "$registri/$1-configura.log"; exit 1; }
  cmake --build --preset "$1" -j "$processori" >"$registri/$1.log" 2>&1 || { tail -n 80 "$registri/$1.log"; exit 1; }
  tail -n 1 "$registri/$1.log"
}

# Runs the suite of a preset and keeps the runner's own count in `conto`. A suite without tests is a failure.
conto=
prova() {
  ctest --preset "$1" -j "$processori" --no-tests=error --output-on-failure 2>&1 | tee "$registri/$1-prove.log"
  conto=$(grep -E '^[0-9]+% tests passed' "$registri/$1-prove.log" | tail -n 1)
}

controlla_formato() {
  git ls-files -co --exclude-standard -z -- '*.cpp' '*.hpp' '*.h' | xargs -0 clang-format-14 --dry-run -Werror
  echo "formato: a posto"
}

passo "dipendenze"
scripts/dipendenze.sh
mkdir -p "$registri"

if [ "$affidabilita" = si ]; then
  passo "compilazione: release"
  costruisci release
  exec scripts/affidabilita.sh "$@"
fi

if [ "$veloce" = no ]; then
  passo "formato"
  controlla_formato
  passo "piani"
  python3 scripts/controlla_strati.py --autoverifica
  python3 scripts/controlla_strati.py
fi

passo "compilazione: release"
costruisci release
passo "prove: release"
prova release
finale=$conto

if [ "$veloce" = no ]; then
  passo "compilazione: clang"
  costruisci clang
  passo "clang-tidy"
  scripts/tidy.sh build/clang
  passo "compilazione: asan"
  costruisci asan
  passo "prove: AddressSanitizer e UndefinedBehaviorSanitizer"
  prova asan
fi

passo "fine"
[ "$veloce" = si ] || echo "sanitizer: $conto"
echo "$finale"
