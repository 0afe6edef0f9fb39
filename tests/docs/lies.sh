#!/bin/sh
# SPDX-License-Identifier: MIT
#
# lies.sh RUN-PAPER BIN: a paper that is not true is found out, and one that is true is let through.
# shellcheck disable=SC2016 # the papers have backquotes
set -eu
run=$1 programs=$2
paper=$HOME/paper.md
store="    rkcfg set-text 'KWX\\Config' Name one"
failed=0

# paper RESULT WHAT LINE...: a paper of these lines ends with RESULT.
expect() {
  wanted=$1 what=$2
  shift 2
  printf '%s\n' "$@" >"$paper"
  code=0
  "$run" "$programs" "$paper" >"$HOME/said" 2>&1 || code=$?
  [ "$code" = "$wanted" ] && return
  echo "$what: ended with $code, not $wanted"
  cat "$HOME/said"
  failed=1
}

get="    rkcfg get 'KWX\\Config' Name"
expect 0 "the truth" "$store" "$get   # comment" '    # -> one'
expect 0 "the truth between fences" '```' "${store#    }" "${get#    }" '# -> one' '```'
expect 0 "the truth in a sentence" "Say \`rkcfg set-text 'KWX\\Config' Name one\`." "$get" '    # -> one'
expect 0 "anything for dots" "$store" "$get" '    # -> o…'
expect 0 "an announced code" "    rkcfg get 'KWX\\Config' Name # exit 1: nothing there"
expect 1 "another output" "$store" "$get" '    # -> two'
expect 1 "a line too many" "$store" "$get" '    # -> one' '    # -> two'
expect 1 "no output" "$store" '    # -> stored'
expect 1 "a command that fails" "$get"
expect 1 "an announced code that does not come" "$store # exit 1: never"
expect 1 "a command that is not there" '    rkcfg frobnicate'
expect 1 "an output that a pipe does not give" "$store" "    rkcfg dump | grep -c two" '    # -> 1'
expect 1 "a failure behind a pipe" '    rkcfg frobnicate | cat'
expect 1 "a lie in a sentence" "$store" 'Say `rkcfg frobnicate`, and see.'
expect 1 "no command at all" 'rkcfg in a sentence, and `rkcfg` alone'
exit $failed
