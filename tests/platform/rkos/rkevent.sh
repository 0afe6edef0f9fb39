#!/bin/bash
# SPDX-License-Identifier: MIT
# rkevent.sh RKEVENT: the tool's command line, texts and exit codes.
set -u
rkevent=$1
failures=0
fail() { echo "rkevent: $1"; failures=$((failures + 1)); }

# expect CODE TEXT ARGUMENTS...: the exit code, and a text that must be in what is printed.
expect() {
    local code=$1 text=$2 printed status
    shift 2
    printed=$("$rkevent" "$@" 2>&1)
    status=$?
    [ "$status" = "$code" ] || fail "'$*' gave $status instead of $code"
    [[ $printed == *"$text"* ]] || fail "'$*' printed: $printed"
}

expect 0 'Usage: rkevent wait' --help
expect 0 'rkevent ' --version
expect 2 'a command is missing'
expect 2 'no such command: dance' dance
expect 2 'wrong option' wait x --dance
expect 2 'wrong option' wait x --timeout
expect 2 'wait takes one name' wait
expect 2 'wait takes one name' wait a b
expect 2 'set takes one name' set
expect 2 'list takes no name' list a
expect 2 'no name for an event' set a/b
expect 2 'no name for an event' wait ''
expect 2 '--timeout: no number: -1' wait x --timeout=-1
expect 2 '--timeout: no number: 4294967295' wait x -t 4294967295
expect 2 '--count: no number: 1x' wait x -n 1x
expect 2 '--count: no number: ' wait x -n ''
expect 1 'no running service has the event none' set none
expect 1 'waiting' wait none -t 10
expect 0 '' list

# serve ARGUMENTS...: a waiting rkevent in the background; its lines come from $out.
serve() {
    exec {out}< <(exec "$rkevent" wait "$@")
    pid=$!
    read -r -t 20 line <&"$out"
    [ "$line" = waiting ] || fail "not waiting: $line"
}

serve tally --count 2
expect 3 'a running service has it' wait tally
[[ $("$rkevent" list) == tally$'\t'alive$'\t'*/events ]] || fail "list: $("$rkevent" list)"
for _ in 1 2; do
    "$rkevent" set tally || fail "set"
    read -r -t 20 line <&"$out"
    [[ $line =~ ^[0-9]{4}-[0-9]{2}-[0-9]{2}\ [0-9:]{8}\.[0-9]{3}\ tally$ ]] || fail "line: $line"
done
wait "$pid" || fail "wait ended with $?"

# Interrupted, it takes its event away; killed, the name is dead until the next service.
for signal in INT:130 TERM:143 HUP:129; do
    serve gone
    kill -"${signal%:*}" "$pid"
    wait "$pid"
    [ $? = "${signal#*:}" ] || fail "SIG$signal"
    [ -z "$("$rkevent" list)" ] || fail "left: $("$rkevent" list)"
done
serve gone
kill -KILL "$pid"
wait "$pid" 2> /dev/null
[[ $("$rkevent" list) == gone$'\t'dead$'\t'* ]] || fail "not dead: $("$rkevent" list)"
expect 1 'no running service' set gone
expect 1 'waiting' wait gone -t 10
[ -z "$("$rkevent" list)" ] || fail "still there: $("$rkevent" list)"

# Nowhere to write: said, not hung.
XDG_RUNTIME_DIR=/proc/none TMPDIR=/proc/none XDG_STATE_HOME=/proc/none expect 0 '' list
expect 0 '' list
"$rkevent" --help > /dev/full && fail "a full output was not noticed"
exit "$failures"
