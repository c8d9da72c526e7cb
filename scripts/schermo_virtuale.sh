# To be sourced. Offers avvia_schermo_virtuale SIZE DIR, which starts a virtual display of its own with a window
# manager, exports DISPLAY and adds the two process ids to the array `processi`, for the caller to stop.
# shellcheck shell=bash

avvia_schermo_virtuale() {
  local numero="$2/display" tentativo
  : >"$numero"
  # The server picks a free display number itself, so that two runs never meet. It does not begin anew when its last
  # program leaves: a look at it would end what is just connecting.
  Xvfb -displayfd 3 -screen 0 "${1}x24" -nolisten tcp -noreset 3>"$numero" >"$2/xvfb.log" 2>&1 &
  processi+=($!)
  for ((tentativo = 0; tentativo < 100; tentativo++)); do
    [ -s "$numero" ] && break
    sleep 0.1
  done
  [ -s "$numero" ] || { echo "schermo virtuale: Xvfb non parte" >&2; cat "$2/xvfb.log" >&2; return 1; }
  DISPLAY=":$(cat "$numero")"
  export DISPLAY
  openbox >"$2/openbox.log" 2>&1 &
  processi+=($!)
  for ((tentativo = 0; tentativo < 100; tentativo++)); do
    xdotool get_num_desktops >/dev/null 2>&1 && return 0
    sleep 0.1
  done
  echo "schermo virtuale: openbox non parte" >&2
  return 1
}
