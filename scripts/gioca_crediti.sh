#!/usr/bin/env bash
# Plays the credits screen on the current display, with keys only: a new due date for two instalments, a new bank for
# two others, a screenshot of the window, confirmation, the host's message. Usage: gioca_crediti.sh SCREENSHOT PID
# PID is the program whose windows are played: when it ends, there is nothing left to wait for.
set -euo pipefail

schermata=$1
programma=$2

# Waits for a visible window whose whole title is $1, gives it the keyboard and prints its number.
aspetta_finestra() {
  local tentativo finestra
  for ((tentativo = 0; tentativo < 600; tentativo++)); do
    finestra=$(xdotool search --onlyvisible --name "^$1\$" 2>/dev/null | tail -n 1 || true)
    if [ -n "$finestra" ] && xdotool windowactivate --sync "$finestra" 2>/dev/null; then
      echo "$finestra"
      return 0
    fi
    kill -0 "$programma" 2>/dev/null || break
    sleep 0.1
  done
  echo "gioca: la finestra \"$1\" non compare" >&2
  return 1
}

tasti() { xdotool key --delay 80 "$@"; }

finestra=$(aspetta_finestra "LumoScad - Scadenze e banche")
sleep 1
# From the list back to the two fields at the top: the date first, then the bank.
tasti shift+Tab shift+Tab
xdotool type --delay 80 "$(date -d '+60 days' +%d/%m/%y)"
tasti Tab Down Down Tab
# The list opens on the first row's date tick; the bank's is two columns to the right.
tasti space Down Down space
tasti Down Right Right space Down Down space
sleep 0.5
import -frame -window "$finestra" "$schermata"
tasti ctrl+Return

finestra=$(aspetta_finestra "LumoScad")
sleep 0.5
import -frame -window "$finestra" "${schermata%.png}_messaggio.png"
tasti Return
