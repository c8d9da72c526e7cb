#!/usr/bin/env bash
# Prints the figures of what the component withstands, section by section: three databases, connections cut and servers
# lost, eight terminals at once and half an hour of whatever may befall them, terminals killed at every step, a failure at
# every call, full disks, properties and hostile input, fuzzing, line coverage. Wants the release build; takes two hours
# on two cores.
#   scripts/reliability.sh [SECTION...]   basi esiti cluster terminali crescita mezzora uccisioni iniezioni spazio ostili
#                                          fuzz copertura; all where none is given. mezzora:postgres and mezzora:galera say
#                                          what is lost, and mezzora alone takes the one or the other
#   LUMOSCAD_PROVA_MINUTI, _SEME           of mezzora: minutes in the place of 30, a seed in the place of a new one
#   LUMOSCAD_FUZZ_SECONDI                  seconds for each fuzzer (60)
#   LUMOSCAD_COSTRUZIONE                   directory of the build (build)
set -euo pipefail
cd "$(dirname "$0")/.."

build=${LUMOSCAD_COSTRUZIONE:-build}
logs=build/registri
mkdir -p "$logs"
status=0

# play NAME...: runs these entries of the suite at full size, prints how many cases each had and the figures that they
# print themselves.
play() {
  local pattern log=$logs/affidabilita-$1.log
  pattern="^($(IFS='|'; echo "$*"))$"
  LUMOSCAD_PER_INTERO=1 ctest --test-dir "$build" -R "$pattern" --no-tests=error -V >"$log" 2>&1 || status=1
  awk '
    /^ *Start +[0-9]+: / { name[$2 + 0] = $3 }
    /^[0-9]+: \[==========\] [0-9]+ tests? from .* ran\./ { n = $1 + 0; cases[n] = $3 }
    /^[0-9]+: \[  PASSED  \]/ { n = $1 + 0; passed[n] = $5 }
    /^[0-9]+: \[  SKIPPED \] [0-9]+ tests?, listed below/ { n = $1 + 0; skipped[n] = $5 }
    / Test +#[0-9]+: / { sub(/.*#/, ""); n = $1 + 0; last = $0; seconds[n] = $(NF - 1); failed[n] = last !~ /Passed/ }
    END { for (n in name) printf "%-24s %4d prove, %4d riuscite, %3d saltate, %6.1f s%s\n", name[n], cases[n],
            passed[n], skipped[n], seconds[n], failed[n] ? "  FALLITA" : "" }' "$log" | sort
  # A name that is no entry's any more would be passed over in silence.
  if [ "$(grep -c '^ *Start ' "$log")" -lt $# ]; then
    echo "reliability.sh: non tutte le voci chieste ci sono: $*" >&2
    status=1
  fi
  sed -nE 's/^[0-9]+: ((terminali|crescita|mezzora|uccisioni|iniezioni|spazio|esiti|cluster): .*)/\1/p' "$log"
  { grep -ohE 'DB2: .*' "$log" || true; } | sort -u
  if [ "$status" != 0 ]; then
    grep -E '^[0-9]+: .*(Failure|FAILED)' "$log" | head -n 40 || true
  fi
}

# play_cases NAME [FILTER]: runs the cases of one test program and prints how many there were; none is a failure.
play_cases() {
  local log=$logs/affidabilita-$1.log filtro filtri
  IFS=: read -ra filtri <<<"${2:-*}"
  for filtro in "${filtri[@]}"; do
    "$build/bin/$1" --gtest_list_tests --gtest_filter="$filtro" | grep -q '^  ' || {
      echo "reliability.sh: $1 non ha prove «$filtro»" >&2
      status=1
    }
  done
  "$build/bin/$1" --gtest_filter="${2:-*}" >"$log" 2>&1 || status=1
  awk -v name="$1" '
    /^\[==========\] [0-9]+ tests? from .* ran\./ { cases = $2 }
    /^\[  PASSED  \]/ { passed = $4 }
    /^\[  SKIPPED \] [0-9]+ tests?, listed below/ { skipped = $4 }
    END { printf "%-24s %4d prove, %4d riuscite, %3d saltate%s\n", name, cases, passed, skipped,
            (cases > 0 && cases == passed + skipped) ? "" : "  FALLITA"
          exit cases == 0 }' "$log" || status=1
  grep -E ': Failure$|^\[  FAILED' "$log" | head -n 40 || true
}

section() {
  case "$1" in
  basi) play ado_test base_dati_test documenti_presunti_test azioni_test ;;
  esiti)
    play esiti_test segreti_test
    cat "$build/esiti.md"
    ;;
  cluster)
    play cluster_test terminali_cluster_test
    local suite
    for suite in base_dati_test documenti_presunti_test azioni_test; do
      LUMOSCAD_PROVA_PIU_SERVER=1 play_cases "$suite" '*/postgres*:*/mariadb*'
    done
    LUMOSCAD_PROVA_PIU_SERVER=1 play_cases esiti_test 'Servers/Cuts.*'
    grep '^esiti: ' "$logs/affidabilita-esiti_test.log" || status=1
    ;;
  terminali) play terminali_test ;;
  crescita) play crescita_test ;;
  mezzora) play mezzora_test ;;
  mezzora:*) LUMOSCAD_PROVA_GRUPPO=${1#*:} play mezzora_test ;;
  uccisioni) play uccisioni_test ;;
  iniezioni) play iniezioni_test ;;
  spazio) play spazio_test ;;
  ostili)
    play_cases proprieta_test
    play_cases ostile_test
    play_cases host_test 'HostileReply.*:HostileEnvironment.*:LocalFile.*:XmlDocument.*'
    play_cases programma_test
    play_cases rilettura_test
    play_cases ingressi_conservati_test
    ;;
  fuzz) scripts/fuzz.sh "${LUMOSCAD_FUZZ_SECONDI:-60}" || status=1 ;;
  copertura) scripts/coverage.sh || status=1 ;;
  *)
    echo "reliability.sh: sezione sconosciuta: $1" >&2
    exit 2
    ;;
  esac
}

[ $# -gt 0 ] || set -- basi esiti cluster terminali crescita mezzora uccisioni iniezioni spazio ostili fuzz copertura
for name in "$@"; do
  printf '\n==== %s (%d s)\n' "$name" "$SECONDS"
  section "$name"
done
exit "$status"
