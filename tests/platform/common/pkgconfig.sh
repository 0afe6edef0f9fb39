#!/bin/sh
# SPDX-License-Identifier: MIT
#
# pkgconfig.sh BUILD STAGE LIBDIR COMPILER: a C program finds the installed libraries by pkg-config alone, also after
# the installed tree was moved.
set -e
build=$1 stage=$2 libdir=$3 compiler=$4
rm -rf "$stage"
cmake --install "$build" --prefix "$stage/first" >/dev/null
mv "$stage/first" "$stage/usr"
export PKG_CONFIG_PATH="$stage/usr/$libdir/pkgconfig"
cat >"$stage/program.c" <<'END'
#include <rkcfg.h>
#include <rkos.h>
#include <rkptp.h>
#include <stdio.h>
int main(void)
{
    char name[256];
    rkPTPEnd(NULL);
    return printf("%s %s\n", rkOSVersion(), rkPTPVersion()) < 0 || rkCFGGetDefaultName(name, sizeof name) != 0;
}
END
# shellcheck disable=SC2046
"$compiler" -o "$stage/program" "$stage/program.c" $(pkg-config --cflags --libs rkos rkcfg rkptp) \
    -Wl,-rpath,"$(pkg-config --variable=libdir rkos)"
[ "$("$stage/program")" = "2.0 2.0" ]
version=$(pkg-config --modversion rkos)
for name in rkcfg rkptp corvel; do
    [ "$(pkg-config --modversion "$name")" = "$version" ]
    pkg-config --validate "$name"
done
pkg-config --cflags corvel | grep -q "include/corvel"
