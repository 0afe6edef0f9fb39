#!/bin/sh
# SPDX-License-Identifier: MIT
#
# hardening.sh BUILD FORTIFIED FLAGS: what is built carries its armour. FORTIFIED: 1 in release builds. FLAGS: the
# compiler flags that every object with debug information must have been made with.
build=$1 fortified=$2 flags=$3
failed=0
fail()
{
    echo "$1: $2"
    failed=1
}
for file in "$build"/bin/* "$build"/lib/librk*.so "$build"/lib/libcorvel.so "$build"/libexec/corvel/ptp_launch; do
    [ -f "$file" ] || continue
    readelf -hW "$file" | grep -q 'Type: *DYN' || fail "$file" "can be loaded at one address only"
    readelf -lW "$file" | grep -q GNU_RELRO || fail "$file" "no relocation table is made read-only"
    readelf -dW "$file" | grep -qE 'BIND_NOW|FLAGS_1.*NOW' || fail "$file" "the relocation table stays writable"
    readelf -lW "$file" | grep -q 'GNU_STACK.*RWE' && fail "$file" "the stack can be executed"
    for flag in $flags; do
        readelf -SW "$file" | grep -q '\.debug_info' || continue
        readelf --debug-dump=info --dwarf-depth=1 "$file" | grep 'DW_AT_producer' | grep -q -- "$flag" ||
            fail "$file" "built without $flag"
    done
done
for file in "$build"/lib/librkos.so "$build"/libexec/corvel/ptp_launch; do
    [ "$fortified" = 1 ] || continue
    nm -D "$file" | grep -q '_chk' || fail "$file" "no call of the C library is checked for its buffer"
done
exit $failed
