#!/usr/bin/env bash
# Measures the component against plain programs and Qt's own model, prints the table of what was measured, with target
# and verdict, and writes it into docs/performance.md. Figures are ratios of medians of this run, both sides in turns;
# the servers are the run's own. Ends with status 1 when a target was missed.
#   ./bench.sh            installs what is missing, builds, measures everything: a quarter of an hour on two cores
#   ./bench.sh --veloce   the smallest sizes: shows that every measure still works, says nothing about time and writes
#                         nothing
#   ./bench.sh MEASURE... these alone (`bench_carico` names them), and writes nothing
#   LUMOSCAD_COSTRUZIONE  an optimised build that is there already: nothing is installed or built
set -euo pipefail
cd "$(dirname "$0")"

quick=
[ "${1:-}" = --veloce ] && { quick=--veloce; shift; }
build=${LUMOSCAD_COSTRUZIONE:-build}
page=docs/performance.md
logs=$build/registri
rows=$logs/bench$quick-righe.txt
table=$logs/bench$quick-tabella.md
mkdir -p "$logs"

if [ -z "${LUMOSCAD_COSTRUZIONE:-}" ]; then
  scripts/dependencies.sh
  { cmake --preset release -S . && cmake --build --preset release -j "$(nproc)" --target bench_carico; } \
    >"$logs/bench-compila.log" 2>&1 || { tail -n 40 "$logs/bench-compila.log"; exit 2; }
fi

# Without a priority of its own a busy machine measures its other work. The servers inherit it.
ahead=()
[ -z "$quick" ] && chrt -r 1 true 2>/dev/null && ahead=(chrt -r 1)

status=0
"${ahead[@]}" "$build/bin/bench_carico" --righe ${quick:+"$quick"} "$@" >"$rows" || status=$?
[ "$status" -le 1 ] || exit "$status"

# Without its table a run shows nothing: every measure that is to be there must have given its rows.
if [ $# -eq 0 ]; then
  while read -r row; do
    grep -q "^riga.$row" "$rows" || { echo "bench.sh: manca la misura «$row»" >&2; exit 2; }
  done <<'FINE'
sort by
filter
gesture
load, without the window
load, against QSqlQueryModel
wait until the window
scrolling a page
resident memory
presumed documents
request file
command to window
command without a screen
confirmation over SSH
confirmation of credits, database update
FINE
fi
if [ -n "$quick" ]; then
  echo "bench: $(wc -l <"$rows") misure, dimensioni minime, senza giudizio sui tempi"
  exit 0
fi

awk -F'\t' '
  BEGIN { print "| what | size | figure | target | verdict | medians |"; print "|---|---|---|---|---|---|" }
  $1 == "riga" {
    verdict = $6 + 0 == 0 ? "" : $4 > $6 ? "missed" : "met"
    printf "| %s | %s | %.2f%s | %s | %s | %s |\n", $2, $3, $4, $5 == "" ? "" : " " $5,
      $6 + 0 == 0 ? "" : sprintf("%.2f", $6), verdict, $7 }' "$rows" >"$table"
printf '\n'
cat "$table"

version() { dpkg-query -W -f='${source:Upstream-Version}' "$1" 2>/dev/null || echo "?"; }
written() {
  printf '%s, %s processors (%s), Linux %s; gcc %s, Qt %s, unixODBC %s; psqlodbc %s and PostgreSQL %s, ' \
    "$(date -u +%Y-%m-%d)" "$(nproc)" "$(sed -n 's/^model name[^:]*: *//p' /proc/cpuinfo | head -n 1)" \
    "$(uname -r | cut -d- -f1)" "$(gcc -dumpfullversion)" "$(version libqt6core6)" "$(version unixodbc)" \
    "$(version odbc-postgresql)" "$(version postgresql-15)"
  printf 'libsqliteodbc %s and SQLite %s, OpenSSH %s.\n\n' "$(version libsqliteodbc)" "$(version libsqlite3-0)" \
    "$(version openssh-server)"
  cat "$table"
}
if [ $# -eq 0 ]; then
  written >"$table.page"
  awk -v part="$table.page" '
    /^<!-- end of what bench.sh writes -->$/ { inside = 0 }
    !inside { print }
    /^<!-- bench.sh writes from here -->$/ {
      inside = 1; print ""; while ((getline line < part) > 0) print line; print "" }' "$page" >"$page.nuova"
  mv "$page.nuova" "$page"
  echo "scritto: $page"
fi
exit "$status"
