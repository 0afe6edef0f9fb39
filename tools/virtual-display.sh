# SPDX-License-Identifier: MIT
# shellcheck shell=bash
#
# Shows a program on a virtual X display, for machines without one. Sourced by ./run after setup.sh; expects `build`,
# the folder for the screenshot.
# Whatever is started here is ended here, by its process id, also when the caller is interrupted.

: "${build:?}"
helpers=()
private=
window=

end_helpers() {
  trap - EXIT INT TERM HUP
  local pid
  for pid in "${helpers[@]}"; do kill "$pid" 2>/dev/null; done
  for pid in "${helpers[@]}"; do wait "$pid" 2>/dev/null; done
  [ -n "$private" ] && rm -rf "$private"
}

# Xvfb chooses a free number itself and reports it; only holders of the cookie get in. It must not reset itself
# (-noreset) when the first screenshot tool leaves, or the program may come in that moment and be refused.
start_display() {
  local number
  export XAUTHORITY=$private/cookie
  : >"$XAUTHORITY"
  local cookie
  cookie=$(mcookie)
  xauth -q add :0 . "$cookie" 2>/dev/null
  mkfifo "$private/number"
  Xvfb -displayfd 3 -screen 0 1280x1024x24 -dpi 96 -noreset -nolisten tcp -auth "$XAUTHORITY" 3>"$private/number" >"$private/xvfb.log" 2>&1 &
  helpers+=($!)
  read -r -t 30 number <"$private/number" || { cat "$private/xvfb.log" >&2; die "Xvfb did not start"; }
  export DISPLAY=:$number
  xauth -q add "$DISPLAY" . "$cookie" 2>/dev/null
}

# wait_for_window PID: until it has a visible window and something is painted on the screen; 30 s at most.
wait_for_window() {
  local try
  for ((try = 0; try < 300; try++)); do
    kill -0 "$1" 2>/dev/null || return 1
    window=$(xdotool search --onlyvisible --pid "$1" 2>/dev/null | head -n 1)
    if [ -n "$window" ]; then
      scrot -o "$private/now.png" 2>/dev/null
      cmp -s "$private/empty.png" "$private/now.png" || return 0
    fi
    sleep 0.1
  done
  return 1
}

# The window alone, without the empty screen around it.
save_screenshot() {
  local X Y WIDTH HEIGHT
  sleep 0.5 # the first values of the clock
  eval "$(xdotool getwindowgeometry --shell "$window" | grep -E '^(X|Y|WIDTH|HEIGHT)=-?[0-9]+$')"
  scrot -o -a "$X,$Y,$WIDTH,$HEIGHT" "$build/screenshot.png"
}

# A viewer can be pointed at the display from this machine only, with a password of this run.
start_viewer_port() {
  local port
  command -v x11vnc >/dev/null || return 0
  (umask 077 && head -c 6 /dev/urandom | base64 | tr '+/' 'xy' >"$private/password")
  x11vnc -display "$DISPLAY" -auth "$XAUTHORITY" -localhost -noipv6 -autoport 5900 -passwdfile "$private/password" \
    -forever -shared -quiet -noshm >"$private/port" 2>"$private/x11vnc.log" &
  helpers+=($!)
  local try
  for ((try = 0; try < 100; try++)); do
    port=$(sed -n 's/^PORT=//p' "$private/port")
    [ -n "$port" ] && break
    sleep 0.1
  done
  if [ -n "$port" ]; then
    say "look in live: VNC viewer on this machine to localhost:$port (127.0.0.1 only), password $(cat "$private/password")"
    say "from elsewhere: ssh -L $port:localhost:$port $(hostname 2>/dev/null || echo this-machine), then the same"
  else
    say "x11vnc did not start; no live view"
  fi
}

# show_on_virtual_display PROGRAM ARGUMENTS...: returns with the program's exit code when it ends.
show_on_virtual_display() {
  local program
  private=$(mktemp -d) || die "no temporary folder"
  trap end_helpers EXIT
  trap 'exit 129' HUP
  trap 'exit 130' INT
  trap 'exit 143' TERM
  start_display
  unset WAYLAND_DISPLAY
  scrot -o "$private/empty.png" 2>/dev/null
  "$@" &
  program=$!
  helpers=("$program" "${helpers[@]}") # ended first
  if wait_for_window "$program"; then
    save_screenshot
    say "no display here, so the dialog is on the virtual display $DISPLAY; screenshot: $build/screenshot.png"
    start_viewer_port
    say "it runs until it is closed (Done) or this command is interrupted (Ctrl+C)"
  fi
  wait "$program"
  exit $?
}
