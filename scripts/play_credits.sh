#!/usr/bin/env bash
# Plays the credits screen on the current display, with keys only: a new due date for two instalments, a new bank for
# two others, a screenshot of the window, confirmation, the host's message. Usage: play_credits.sh SCREENSHOT PID
# PID is the program whose windows are played: when it ends, there is nothing left to wait for. The new date is sixty
# days after LUMOSCAD_DATA (today).
set -euo pipefail

screen=$1
program=$2
# shellcheck source=scripts/gestures.sh
. "$(dirname -- "$0")/gestures.sh"

window=$(wait_for_window "LumoScad - Scadenze e banche dei clienti")
sleep 1
# From the list back to the two fields at the top: the date first, then the bank.
keys shift+Tab shift+Tab
type_text "$(date -d "${LUMOSCAD_DATA:-today} +60 days" +%d/%m/%y)"
keys Tab Down Down Tab
# The list opens on the first row's date tick; the bank's is two columns to the right.
keys space Down Down space
keys Down Right Right space Down Down space
photograph "$window" "$screen"
keys ctrl+Return

window=$(wait_for_window "LumoScad")
photograph "$window" "${screen%.png}_messaggio.png"
keys Return
