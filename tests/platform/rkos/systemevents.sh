#!/bin/bash
# SPDX-License-Identifier: MIT
# systemevents.sh RKEVENT: events in the directory of the system's service, on a /run of our own.
set -eu
rkevent=$1
fail() { echo "systemevents: $1"; exit 1; }
mount -t tmpfs -o mode=755 none /run

# Starts a service in the background and waits until it says that it waits.
serve() {
    exec {out}< <(exec "$rkevent" wait "$@")
    pid=$!
    { read -r -t 20 line <&"$out" && test "$line" = waiting; } || fail "no service for $1"
}

# Without the directory events lie at the user's.
serve plain
test -S "$XDG_RUNTIME_DIR/corvel/events/plain" || fail "not in the user's directory"
"$rkevent" set plain || fail "the user's event cannot be set"
wait "$pid"

# With it they lie there, for all whom the directory lets in.
mkdir -m 755 /run/corvel
serve shared
test -S /run/corvel/shared || fail "not in the system's directory"
test "$(stat -c %a /run/corvel/shared)" = 666 || fail "others could not set it"
test ! -e "$XDG_RUNTIME_DIR/corvel/events/shared" || fail "also in the user's directory"
"$rkevent" list | grep -q '^shared	alive	/run/corvel$' || fail "not listed"
"$rkevent" set shared || fail "the system's event cannot be set"
wait "$pid"
test ! -e /run/corvel/shared || fail "left behind"

# A service of the user's own is still found beside it.
chmod 555 /run/corvel
mount -o remount,ro,mode=755 none /run
serve own
test -S "$XDG_RUNTIME_DIR/corvel/events/own" || fail "not passed on to the user's directory"
"$rkevent" set own || fail "the user's event is hidden"
wait "$pid"
mount -o remount,rw none /run

# A directory that everybody may write to is no place to trust, nor is a link.
chmod 777 /run/corvel
serve open
test -S "$XDG_RUNTIME_DIR/corvel/events/open" || fail "a world-writable directory was trusted"
kill "$pid"
rmdir /run/corvel 2> /dev/null || rm -r /run/corvel
ln -s "$HOME/tmp" /run/corvel
serve linked
test -S "$XDG_RUNTIME_DIR/corvel/events/linked" || fail "a link was trusted"
kill "$pid"
