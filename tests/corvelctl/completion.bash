#!/bin/bash
# SPDX-License-Identifier: MIT
# completion.bash SCRIPT BIN: what bash would offer for some lines.
PATH="$2:$PATH"
compopt() { :; }
# shellcheck source=/dev/null
source "$1"
bad=0
# offered LINE WORDS...: the answers, as bash would add them to the word it sees.
offered() {
  local line=$1
  shift
  COMP_LINE=$line COMP_POINT=${#line} COMPREPLY=()
  _corvelctl
  [ "${COMPREPLY[*]}" = "$*" ] || { echo "'$line' offers '${COMPREPLY[*]}', not '$*'" >&2; bad=1; }
}
offered "corvelctl sho" show
offered "corvelctl config ren" rename
offered "corvelctl get 2/vi" 2/video
offered "corvelctl set 2/video rx.dst-" rx.dst-port=
offered "corvelctl set 2 clock=sw" sw-ptp
offered "corvelctl -c " default
offered "corvelctl restore "
exit $bad
