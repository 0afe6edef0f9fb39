#!/bin/sh
# SPDX-License-Identifier: MIT
# test_rkcfg_fulldisk.sh TOOL: the store on a small disk that fills up. Exit 77: no mount namespace here.
tool=$1
if [ "$2" != inside ]; then
    exec "$(dirname "$0")/../../support/unshared" -m "$0" "$tool" inside
fi

fail() {
    echo "FAIL: $*"
    ls -la "$folder"
    exit 1
}

mount -t tmpfs -o size=256k tmpfs "$XDG_CONFIG_HOME" || exit 77
folder=$XDG_CONFIG_HOME/corvel
head -c 65536 /dev/zero >"$XDG_CONFIG_HOME/reserve"
"$tool" set-text p n first || fail "cannot store on the empty disk"

i=0
while "$tool" set-text p "name $i" "$(head -c 2000 /dev/zero | tr '\0' x)" 2>/dev/null; do
    i=$((i + 1))
    [ "$i" -lt 1000 ] || fail "the disk never fills up"
done
[ "$i" -gt 0 ] || fail "nothing could be stored"
dd if=/dev/zero of="$XDG_CONFIG_HOME/filler" bs=1k 2>/dev/null

# A small value may still find room in the log. What the result says must be true.
if "$tool" set-text p n second 2>/dev/null; then expected=second; else expected=first; fi
[ "$("$tool" get p n)" = "$expected" ] || fail "the result of the write was not true"
[ "$("$tool" get p "name 0" | wc -c)" -eq 2001 ] || fail "an earlier value is lost"
for file in "$folder"/*corrupt*; do
    [ ! -e "$file" ] || fail "a file was set aside"
done

rm "$XDG_CONFIG_HOME/filler" "$XDG_CONFIG_HOME/reserve"
"$tool" set-text p n third || fail "cannot store after room was made"
[ "$("$tool" get p n)" = third ] || fail "the new value is not there"
