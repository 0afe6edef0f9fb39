# SPDX-License-Identifier: MIT
# Completion of corvelctl for bash; the program itself knows what may come next, and how bash wants it spelled.
_corvelctl() {
  local found
  found=$(corvelctl __complete_bash "${COMP_LINE:0:COMP_POINT}" "$COMP_WORDBREAKS" 2>/dev/null)
  [[ $? -eq 1 ]] && compopt -o default
  COMPREPLY=()
  [[ $found ]] && mapfile -t COMPREPLY <<<"$found"
  [[ ${COMPREPLY[0]:-} == *[=/] ]] && compopt -o nospace
}
complete -F _corvelctl corvelctl
