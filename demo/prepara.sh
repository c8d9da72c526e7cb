#!/bin/sh
# Prepares a demonstration: a host directory with its back end, the accounting database in SQLite and a private
# ODBC configuration.
#
# Usage: prepara.sh DIR [RATE [PRESUNTI]]
#   DIR      is created, or emptied of an earlier demonstration
#   RATE     number of open instalments (400)
#   PRESUNTI number of rows to add to the presumed documents of customers (0)
#   LUMOSCAD_BIN   directory of the programs (this one, where they are installed; else build/bin beside it)
#   LUMOSCAD_DATA  day around which the due dates fall, YYYY-MM-DD (today)
set -eu

if [ $# -lt 1 ] || [ $# -gt 3 ]; then
  echo "Uso: prepara.sh CARTELLA [RATE [PRESUNTI]]" >&2
  exit 2
fi
qui=$(CDPATH='' cd -- "$(dirname -- "$0")" && pwd)
if [ -x "$qui/VB0001" ]; then
  programmi=${LUMOSCAD_BIN:-$qui}
else
  programmi=${LUMOSCAD_BIN:-$qui/../build/bin}
fi
data=${LUMOSCAD_DATA:-$(date +%Y-%m-%d)}
rate=${2:-400}
presunti=${3:-0}

for programma in VB0001 lumoscad-genera; do
  if [ ! -x "$programmi/$programma" ]; then
    echo "prepara.sh: manca il programma $programmi/$programma" >&2
    exit 1
  fi
done
libreria=
for candidata in /usr/lib/*/odbc/libsqlite3odbc.so /usr/lib/odbc/libsqlite3odbc.so; do
  if [ -e "$candidata" ]; then
    libreria=$candidata
  fi
done
if [ -z "$libreria" ]; then
  echo "prepara.sh: manca il driver ODBC di SQLite (pacchetto libsqliteodbc)" >&2
  exit 1
fi

mkdir -p -- "$1"
base=$(CDPATH='' cd -- "$1" && pwd)
if [ ! -e "$base/ambiente.sh" ] && [ -n "$(ls -A -- "$base")" ]; then
  echo "prepara.sh: $base non è vuota e non contiene una dimostrazione" >&2
  exit 1
fi
rm -rf -- "$base/host" "$base/locale" "$base/odbc"
rm -f -- "$base/contabilita.sqlite"
: >"$base/ambiente.sh"
mkdir -p -- "$base/host/tmp" "$base/host/programmi" "$base/host/registro" "$base/odbc"
mkdir -m 700 -- "$base/locale"
cp -- "$programmi/VB0001" "$base/host/programmi/VB0001"

{
  echo 'PRAGMA synchronous=OFF;'
  cat -- "$qui/schema.sql"
} | sqlite3 -bail "$base/contabilita.sqlite"
"$programmi/lumoscad-genera" "$data" "$rate" "$presunti" >"$base/dati.sql"
sqlite3 -bail "$base/contabilita.sqlite" <"$base/dati.sql"
rm -f -- "$base/dati.sql"

cat >"$base/odbc/odbcinst.ini" <<FINE
[SQLITE]
Description=SQLite
Driver=$libreria
FINE
cat >"$base/odbc/odbc.ini" <<FINE
[CONTABILITA]
Description=Contabilita dimostrativa
Driver=SQLITE
Database=$base/contabilita.sqlite
Timeout=5000
FINE

cita() { printf "'%s'" "$(printf '%s' "$1" | sed "s/'/'\\\\''/g")"; }
cat >"$base/ambiente.sh" <<FINE
export ODBCSYSINI=$(cita "$base/odbc")
export ODBCINI=$(cita "$base/odbc/odbc.ini")
export NEXARO_TRASPORTO=cartella
export NEXARO_RADICE=$(cita "$base/host")
export NEXARO_POSTAZIONE=T01
export NEXARO_CARTELLA_LOCALE=$(cita "$base/locale")
FINE
eventi=$(sqlite3 "$base/contabilita.sqlite" 'SELECT count(*) FROM EVENTOCONTABILE')
echo "Dimostrazione pronta: $eventi eventi contabili."
