#!/usr/bin/env bash
# Builds the component and shows its main job on a demonstration database and host.
#   ./demo.sh [N]   N instalments instead of the usual ones
# With a display the screen is the person's; without one it is played in a virtual display.
set -euo pipefail
cd "$(dirname "$0")"

passo() { printf '\n==== %s\n' "$*"; }

passo "Dipendenze"
scripts/dependencies.sh --senza-server

passo "Compilazione"
mkdir -p build/registri
if ! { cmake --preset release -S . && cmake --build --preset release --target bin/lumoscad bin/lumoscad-genera bin/VB0001; } \
  >build/registri/demo.log 2>&1; then
  tail -n 60 build/registri/demo.log
  exit 1
fi
echo "build/bin/lumoscad"

dimostrazione=build/dimostrazione
passo "Preparazione della base dati e dell'host dimostrativi in $dimostrazione"
demo/prepara.sh "$dimostrazione" "$@"
# shellcheck source=/dev/null
. "$dimostrazione/ambiente.sh"

inizio="-T BANCA /CREDITI -H locale -D 01 -DB2SOURCE CONTABILITA -DB2USER demo -DB2PASS"
comando="$inizio demo -DB2SCHEMA main"

processes=()
termina() {
  for ((i = ${#processes[@]} - 1; i >= 0; i--)); do kill "${processes[i]}" 2>/dev/null || true; done
}
trap termina EXIT

virtuale=no
if [ -z "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
  virtuale=si
  if [ -z "${XDG_RUNTIME_DIR:-}" ]; then
    export XDG_RUNTIME_DIR=$PWD/$dimostrazione/esecuzione
    (umask 077 && mkdir -p "$XDG_RUNTIME_DIR")
  fi
  # shellcheck source=scripts/virtual_display.sh
  . scripts/virtual_display.sh
  start_virtual_display 1280x800 "$dimostrazione"
fi

fotografa_righe() {
  sqlite3 -separator '  ' "$dimostrazione/contabilita.sqlite" "
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
echo "comando: $inizio **** -DB2SCHEMA main"
fotografa_righe >"$dimostrazione/righe_prima.txt"
# The command comes on the standard input: a password has no business in the process list.
esegui=(build/bin/lumoscad -)
stato=0
if [ "$virtuale" = si ]; then
  printf '%s\n' "$comando" | "${esegui[@]}" >"$dimostrazione/risultato.txt" 2>"$dimostrazione/errori.txt" &
  program=$!
  processes+=("$program")
  scripts/play_credits.sh "$PWD/$dimostrazione/crediti.png" "$program"
  wait "$program" || stato=$?
else
  printf '%s\n' "$comando" | "${esegui[@]}" >"$dimostrazione/risultato.txt" 2>"$dimostrazione/errori.txt" || stato=$?
fi
fotografa_righe >"$dimostrazione/righe_dopo.txt"

# VB0001 notes every call on one line of tab-separated fields: outcome, text, number of parameters, the parameters and
# the request file, with its control characters escaped.
registro=$dimostrazione/host/registro/VB0001.log
if [ -s "$registro" ]; then
  awk -F'\t' '{
    printf "\n==== Parametri ricevuti da VB0001: %d\n", $3
    for (i = 0; i < $3; i++) printf "%2d \"%s\"\n", i, $(4 + i)
    righe = $(4 + $3)
    gsub(/\\r\\n/, "\n", righe)
    printf "\n==== File della richiesta (ogni riga finisce con CR LF)\n%s", righe
    printf "\n==== Risposta di VB0001\n%s: %s\n", $1 == "ACCETTATA" ? "MESSAGGIO" : "ERRORE", $2
  }' "$registro"
else
  passo "VB0001 non è stato chiamato"
fi
passo "Righe cambiate nella base dati (- prima, + dopo)"
{ diff -U0 "$dimostrazione/righe_prima.txt" "$dimostrazione/righe_dopo.txt" || true; } >"$dimostrazione/righe.diff"
grep -E '^[-+] ' "$dimostrazione/righe.diff" || echo "(nessuna)"
passo "Risultato"
cat "$dimostrazione/errori.txt" >&2
echo "risultato: \"$(cat "$dimostrazione/risultato.txt")\", stato di uscita $stato"
if [ "$virtuale" = si ]; then
  echo "schermata: $PWD/$dimostrazione/crediti.png"
fi
# Leaving the screen without a change is the person's right; played by the script it would be a failure.
[ "$virtuale" = no ] && [ "$stato" -eq 3 ] && exit 0
exit "$stato"
