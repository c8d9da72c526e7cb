# To be sourced. Offers start_virtual_display SIZE DIR, which starts a virtual display of its own with a window
# manager, exports DISPLAY and a place of its own for settings, and adds the two process ids to the array `processes`,
# for the caller to stop.
# shellcheck shell=bash

start_virtual_display() {
  local number="$2/display" attempt
  : >"$number"
  # The server picks a free display number itself, so that two runs never meet. It does not begin anew when its last
  # program leaves: a look at it would end what is just connecting.
  Xvfb -displayfd 3 -screen 0 "${1}x24" -nolisten tcp -noreset 3>"$number" >"$2/xvfb.log" 2>&1 &
  processes+=($!)
  for ((attempt = 0; attempt < 100; attempt++)); do
    [ -s "$number" ] && break
    sleep 0.1
  done
  [ -s "$number" ] || { echo "schermo virtuale: Xvfb non parte" >&2; cat "$2/xvfb.log" >&2; return 1; }
  DISPLAY=":$(cat "$number")"
  # Nobody sits there: how a person likes the windows is neither read nor changed.
  XDG_CONFIG_HOME=$(realpath -m "$2/impostazioni")
  rm -rf -- "$XDG_CONFIG_HOME"
  export DISPLAY XDG_CONFIG_HOME
  openbox >"$2/openbox.log" 2>&1 &
  processes+=($!)
  for ((attempt = 0; attempt < 100; attempt++)); do
    xdotool get_num_desktops >/dev/null 2>&1 && return 0
    sleep 0.1
  done
  echo "schermo virtuale: openbox non parte" >&2
  return 1
}
