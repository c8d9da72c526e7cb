#!/usr/bin/env bash
# Plays the credits screen on the current display, with keys only: a new due date for two instalments, a new bank for
# two others, a screenshot, confirmation. Usage: gioca_crediti.sh SCREENSHOT
set -euo pipefail

schermata=$1
titolo=${TITOLO_FINESTRA:-LumoScad}

# Waits for a visible window of this title and puts the keyboard on it.
aspetta_finestra() {
  local tentativo finestra
  for ((tentativo = 0; tentativo < 300; tentativo++)); do
    finestra=$(xdotool search --onlyvisible --name "$1" 2>/dev/null | tail -n 1 || true)
    if [ -n "$finestra" ]; then
      xdotool windowactivate --sync "$finestra" 2>/dev/null || true
      echo "$finestra"
      return 0
    fi
    sleep 0.1
  done
  echo "gioca: nessuna finestra \"$1\"" >&2
  return 1
}

tasti() { xdotool key --delay 60 "$@"; }

aspetta_finestra "$titolo" >/dev/null
sleep 1
# From the list back to the two fields at the top: date first, then bank.
tasti shift+Tab shift+Tab
xdotool type --delay 60 "15/01/27"
tasti Tab Down Down Tab
# The list opens on the first row's date tick.
tasti space Down Down space
tasti Down Right Right space Down Down space
sleep 0.5
import -window root "$schermata"
tasti ctrl+Return
# Past the wait window comes the host's message.
sleep 3
aspetta_finestra "$titolo" >/dev/null
import -window root "${schermata%.png}_messaggio.png"
tasti Return
