#!/usr/bin/env bash
# Builds the component and shows its main job on a demonstration database and host.
#   ./demo.sh [N]   N instalments instead of the usual ones
# With a display the screen is the person's; without one it is played in a virtual display.
set -euo pipefail
cd "$(dirname "$0")"

passo() { printf '\n==== %s\n' "$*"; }

passo "Dipendenze"
scripts/dipendenze.sh

passo "Compilazione"
mkdir -p build/registri
if ! { cmake --preset release -S . && cmake --build --preset release --target bin/lumoscad bin/lumoscad-genera bin/VB0001; } \
  >build/registri/demo.log 2>&1; then
  tail -n 60 build/registri/demo.log
  exit 1
fi
echo "build/bin/lumoscad"

passo "Preparazione della base dati e dell'host dimostrativi in build/demo"
demo/prepara.sh build/demo "$@"
# shellcheck source=/dev/null
. build/demo/ambiente.sh

parola=demo
comando=(-T BANCA /CREDITI -H locale -D 01 -DB2SOURCE CONTABILITA -DB2USER demo -DB2PASS "$parola" -DB2SCHEMA main)

processi=()
termina() {
  for ((i = ${#processi[@]} - 1; i >= 0; i--)); do kill "${processi[i]}" 2>/dev/null || true; done
}
trap termina EXIT

virtuale=no
if [ -z "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
  virtuale=si
  . scripts/schermo_virtuale.sh
  avvia_schermo_virtuale 1280x800 build/demo
fi

fotografa_righe() {
  sqlite3 -separator '  ' build/demo/contabilita.sqlite "
    SELECT printf('%6d', E.EVENTOCONTABILEKEY), C.CODICECONTO, printf('%-12s', P.NUMEROPARTITA),
           'rata ' || E.NUMERORATA, 'scade ' || E.DATASCADENZA, 'in origine ' || coalesce(E.DATASCADENZAORIGINALE, '-'),
           'banca ' || coalesce(B.CODICECONTO, '-')
      FROM EVENTOCONTABILE E
      JOIN CONTOCONTABILE C ON C.CONTOCONTABILE_KEY = E.CONTOCONTABILE_KEY
      LEFT JOIN PARTITACONTABILE P ON P.PARTITACONTABILEKEY = E.PARTITACONTABILEKEY
      LEFT JOIN CONTOCONTABILE B ON B.CONTOCONTABILE_KEY = E.BANCAPRESENTAZIONE_KEY
     ORDER BY E.EVENTOCONTABILEKEY"
}

passo "Esecuzione"
echo "comando: ${comando[*]/#$parola/****}"
fotografa_righe >build/demo/righe_prima.txt
# The command comes on the standard input: a password has no business in the process list.
esegui=(build/bin/lumoscad -)
stato=0
if [ "$virtuale" = si ]; then
  printf '%s\n' "${comando[*]}" | "${esegui[@]}" >build/demo/risultato.txt 2>build/demo/errori.txt &
  programma=$!
  processi+=("$programma")
  scripts/gioca_crediti.sh build/demo/crediti.png
  wait "$programma" || stato=$?
else
  printf '%s\n' "${comando[*]}" | "${esegui[@]}" >build/demo/risultato.txt 2>build/demo/errori.txt || stato=$?
fi
fotografa_righe >build/demo/righe_dopo.txt

passo "Parametri ricevuti da VB0001"
cat build/demo/host/registro/VB0001.log 2>/dev/null || echo "(VB0001 non è stato chiamato)"
passo "File della richiesta"
for richiesta in build/demo/host/registro/*.dos; do
  [ -e "$richiesta" ] && { echo "${richiesta##*/}"; tr -d '\r' <"$richiesta"; }
done
passo "Risposta di VB0001"
for risposta in build/demo/host/registro/*.xml; do
  [ -e "$risposta" ] && cat "$risposta"
done
passo "Righe cambiate nella base dati (- prima, + dopo)"
diff -U0 build/demo/righe_prima.txt build/demo/righe_dopo.txt | grep -E '^[-+][^-+]' || echo "(nessuna)"
passo "Risultato"
cat build/demo/errori.txt >&2
echo "risultato: \"$(cat build/demo/risultato.txt)\", stato di uscita $stato"
if [ "$virtuale" = si ]; then
  echo "schermata: $PWD/build/demo/crediti.png"
fi
exit "$stato"
