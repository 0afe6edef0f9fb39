# SPDX-License-Identifier: MIT
# Completion of corvelctl for bash; the program itself knows what may come next.
_corvelctl() {
  local line=${COMP_LINE:0:COMP_POINT} words current prefix
  read -ra words <<<"$line"
  [[ $line == *[[:blank:]] ]] && words+=("")
  current=${words[-1]}
  mapfile -t COMPREPLY < <(corvelctl __complete "${words[@]:1}" 2>/dev/null)
  # bash breaks words at "=" and ":", so what stands before them is not part of the answer.
  prefix=${current%"${current##*[=:]}"}
  COMPREPLY=("${COMPREPLY[@]#"$prefix"}")
  [[ ${COMPREPLY[0]:-} == *[=/] ]] && compopt -o nospace
}
complete -o default -F _corvelctl corvelctl
