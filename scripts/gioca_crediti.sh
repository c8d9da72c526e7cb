#!/usr/bin/env bash
# Plays the credits screen on the current display, with keys only: a new due date for two instalments, a new bank for
# two others, a screenshot of the window, confirmation, the host's message. Usage: gioca_crediti.sh SCREENSHOT PID
# PID is the program whose windows are played: when it ends, there is nothing left to wait for. The new date is sixty
# days after LUMOSCAD_DATA (today).
set -euo pipefail

schermata=$1
programma=$2
# shellcheck source=scripts/gesti.sh
. "$(dirname -- "$0")/gesti.sh"

finestra=$(aspetta_finestra "LumoScad - Scadenze e banche dei clienti")
sleep 1
# From the list back to the two fields at the top: the date first, then the bank.
tasti shift+Tab shift+Tab
digita "$(date -d "${LUMOSCAD_DATA:-today} +60 days" +%d/%m/%y)"
tasti Tab Down Down Tab
# The list opens on the first row's date tick; the bank's is two columns to the right.
tasti space Down Down space
tasti Down Right Right space Down Down space
fotografa "$finestra" "$schermata"
tasti ctrl+Return

finestra=$(aspetta_finestra "LumoScad")
fotografa "$finestra" "${schermata%.png}_messaggio.png"
tasti Return
