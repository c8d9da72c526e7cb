# To be sourced. Hands for a program's windows on the current display: a script sets `program` to its process id.
# shellcheck shell=bash

# Waits for a visible window whose whole title is $1, gives it the keyboard and prints its number.
wait_for_window() {
  local attempt window
  for ((attempt = 0; attempt < 600; attempt++)); do
    window=$(xdotool search --onlyvisible --name "^$1\$" 2>/dev/null | tail -n 1 || true)
    if [ -n "$window" ] && xdotool windowactivate --sync "$window" 2>/dev/null; then
      echo "$window"
      return 0
    fi
    # shellcheck disable=SC2154
    kill -0 "$program" 2>/dev/null || break
    sleep 0.1
  done
  echo "gesti: la finestra \"$1\" non compare" >&2
  return 1
}

keys() { xdotool key --delay 80 "$@"; }

# Presses the key $1 as many times as $2 says.
repeat() {
  local time
  for ((time = 0; time < $2; time++)); do keys "$1"; done
}

type_text() { xdotool type --delay 80 "$1"; }

# Saves the window $1 with its frame as $2; an unchanged window gives an unchanged file.
photograph() {
  sleep 0.5
  import -frame -window "$1" -strip -define png:exclude-chunks=date,time "$2"
}

# Saves the only window of the display, with its frame and with what has dropped down over it, as $1.
photograph_with_popups() {
  sleep 0.5
  import -window root -trim +repage -strip -define png:exclude-chunks=date,time "$1"
}
