# To be sourced. Hands for a program's windows on the current display: a script sets `programma` to its process id.
# shellcheck shell=bash

# Waits for a visible window whose whole title is $1, gives it the keyboard and prints its number.
aspetta_finestra() {
  local tentativo finestra
  for ((tentativo = 0; tentativo < 600; tentativo++)); do
    finestra=$(xdotool search --onlyvisible --name "^$1\$" 2>/dev/null | tail -n 1 || true)
    if [ -n "$finestra" ] && xdotool windowactivate --sync "$finestra" 2>/dev/null; then
      echo "$finestra"
      return 0
    fi
    # shellcheck disable=SC2154
    kill -0 "$programma" 2>/dev/null || break
    sleep 0.1
  done
  echo "gesti: la finestra \"$1\" non compare" >&2
  return 1
}

tasti() { xdotool key --delay 80 "$@"; }

# Presses the key $1 as many times as $2 says.
ripeti() {
  local volta
  for ((volta = 0; volta < $2; volta++)); do tasti "$1"; done
}

digita() { xdotool type --delay 80 "$1"; }

# Saves the window $1 with its frame as $2; an unchanged window gives an unchanged file.
fotografa() {
  sleep 0.5
  import -frame -window "$1" -strip -define png:exclude-chunks=date,time "$2"
}
