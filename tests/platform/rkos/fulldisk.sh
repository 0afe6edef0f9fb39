#!/bin/sh
# SPDX-License-Identifier: MIT
# fulldisk.sh PROGRAM: runs it on a disk of 64 KiB and reads what the log says. Once with the log on
# another disk, once with the log on the full one.
set -eu
disk="$HOME/disk"
mkdir -p "$disk"
mount -t tmpfs -o size=64k,mode=700 none "$disk"

"$1" "$disk"
log="$XDG_STATE_HOME/corvel/fulldisk.log"
test "$(grep -c 'disk/big is incomplete: No space left on device' "$log")" = 1
test "$(grep -c 'disk/small is incomplete: No space left on device' "$log")" = 1
test "$(wc -l < "$log")" = 2

rm "$disk/big" "$disk/small"
mkdir "$disk/state"
XDG_STATE_HOME="$disk/state" "$1" "$disk" 2> "$HOME/errors"
test "$(grep -c 'is incomplete: No space left on device' "$HOME/errors")" = 2
