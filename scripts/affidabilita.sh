#!/usr/bin/env bash
# Prints the figures of what the component withstands, section by section: three databases, connections cut and servers
# lost, eight terminals at once, terminals killed at every step, a failure at every call, properties and hostile input,
# fuzzing, line coverage. Wants the release build; takes half an hour on two cores.
#   scripts/affidabilita.sh [SECTION...]   basi esiti terminali uccisioni iniezioni ostili fuzz copertura; all where none
#                                          is given
#   LUMOSCAD_FUZZ_SECONDI                  seconds for each fuzzer (60)
#   LUMOSCAD_COSTRUZIONE                   directory of the build (build)
set -euo pipefail
cd "$(dirname "$0")/.."

costruzione=${LUMOSCAD_COSTRUZIONE:-build}
registri=build/registri
mkdir -p "$registri"
esito=0

# gioca NAME...: runs these entries of the suite at full size, prints how many cases each had and the figures that they
# print themselves.
gioca() {
  local forma registro=$registri/affidabilita-$1.log
  forma="^($(IFS='|'; echo "$*"))$"
  LUMOSCAD_PER_INTERO=1 ctest --test-dir "$costruzione" -R "$forma" --no-tests=error -V >"$registro" 2>&1 || esito=1
  awk '
    /^ *Start +[0-9]+: / { nome[$2 + 0] = $3 }
    /^[0-9]+: \[==========\] [0-9]+ tests? from .* ran\./ { n = $1 + 0; casi[n] = $3 }
    /^[0-9]+: \[  PASSED  \]/ { n = $1 + 0; riusciti[n] = $5 }
    /^[0-9]+: \[  SKIPPED \] [0-9]+ tests?, listed below/ { n = $1 + 0; saltati[n] = $5 }
    / Test +#[0-9]+: / { sub(/.*#/, ""); n = $1 + 0; ultimo = $0; secondi[n] = $(NF - 1); fallita[n] = ultimo !~ /Passed/ }
    END { for (n in nome) printf "%-24s %4d prove, %4d riuscite, %3d saltate, %6.1f s%s\n", nome[n], casi[n],
            riusciti[n], saltati[n], secondi[n], fallita[n] ? "  FALLITA" : "" }' "$registro" | sort
  # A name that is no entry's any more would be passed over in silence.
  if [ "$(grep -c '^ *Start ' "$registro")" -lt $# ]; then
    echo "affidabilita.sh: non tutte le voci chieste ci sono: $*" >&2
    esito=1
  fi
  sed -nE 's/^[0-9]+: ((terminali|uccisioni|iniezioni|esiti): .*)/\1/p' "$registro"
  { grep -ohE 'DB2: .*' "$registro" || true; } | sort -u
  if [ "$esito" != 0 ]; then
    grep -E '^[0-9]+: .*(Failure|FAILED)' "$registro" | head -n 40 || true
  fi
}

# casi NAME [FILTER]: runs the cases of one test program and prints how many there were; none is a failure.
casi() {
  local registro=$registri/affidabilita-$1.log filtro filtri
  IFS=: read -ra filtri <<<"${2:-*}"
  for filtro in "${filtri[@]}"; do
    "$costruzione/bin/$1" --gtest_list_tests --gtest_filter="$filtro" | grep -q '^  ' || {
      echo "affidabilita.sh: $1 non ha prove «$filtro»" >&2
      esito=1
    }
  done
  "$costruzione/bin/$1" --gtest_filter="${2:-*}" >"$registro" 2>&1 || esito=1
  awk -v nome="$1" '
    /^\[==========\] [0-9]+ tests? from .* ran\./ { casi = $2 }
    /^\[  PASSED  \]/ { riusciti = $4 }
    END { printf "%-24s %4d prove, %4d riuscite%s\n", nome, casi, riusciti, (casi > 0 && casi == riusciti) ? "" : "  FALLITA"
          exit casi == 0 }' "$registro" || esito=1
  grep -E ': Failure$|^\[  FAILED' "$registro" | head -n 40 || true
}

sezione() {
  case "$1" in
  basi) gioca ado_test base_dati_test documenti_presunti_test azioni_test ;;
  esiti)
    gioca esiti_test segreti_test
    cat "$costruzione/esiti.md"
    ;;
  terminali) gioca terminali_test ;;
  uccisioni) gioca uccisioni_test ;;
  iniezioni) gioca iniezioni_test ;;
  ostili)
    casi proprieta_test
    casi ostile_test
    casi host_test 'HostileReply.*:HostileEnvironment.*:LocalFile.*:XmlDocument.*'
    casi programma_test
    casi rilettura_test
    casi ingressi_conservati_test
    ;;
  fuzz) scripts/fuzz.sh "${LUMOSCAD_FUZZ_SECONDI:-60}" || esito=1 ;;
  copertura) scripts/copertura.sh || esito=1 ;;
  *)
    echo "affidabilita.sh: sezione sconosciuta: $1" >&2
    exit 2
    ;;
  esac
}

[ $# -gt 0 ] || set -- basi esiti terminali uccisioni iniezioni ostili fuzz copertura
for nome in "$@"; do
  printf '\n==== %s (%d s)\n' "$nome" "$SECONDS"
  sezione "$nome"
done
exit "$esito"
