#!/bin/sh
# SPDX-License-Identifier: MIT
#
# exports.sh SOURCE BUILD: each platform library shows what its header declares, and nothing else.
failed=0
for name in rkos rkcfg rkptp; do
    # One declaration begins each line that has the export macro; its name stands before the first parenthesis.
    sed -n 's/^RK[A-Z]*_API [^(]*[ *]\([A-Za-z_]*\)(.*/\1/p' "$1/platform/$name/include/$name.h" | sort >"$name.declared"
    nm -D --defined-only --format=posix "$2/lib/lib$name.so" | cut -d' ' -f1 | sort >"$name.exported"
    [ -s "$name.declared" ] || { echo "$name.h: no declarations found"; failed=1; }
    diff -u "$name.declared" "$name.exported" || failed=1
    grep -qvE '^(rk|ErrOut$|ErrLogSetFileName$)' "$name.exported" && { echo "$name: foreign names"; failed=1; }
done
exit $failed
