#!/bin/sh
# SPDX-License-Identifier: MIT
#
# runpath.sh BUILD: the program and the libraries find each other by relative run paths only, without an empty entry
# (the loader would look into the current folder), the three platform libraries are really shared, under names without a
# version, and none binds its own names to itself, so that a site can put others in their place.
cd "$1" || exit 1
code=0
fail() { echo "$*"; code=1; }
for file in bin/* lib/*.so; do
  path=$(readelf -d "$file" | sed -n 's/.*runpath: \[\(.*\)\].*/\1/p')
  case ":$path:" in
    ::) ;; # needs none of ours
    *::*) fail "$file has an empty entry in its run path: $path" ;;
  esac
  for entry in $(echo "$path" | tr : ' '); do
    case $entry in \$ORIGIN*) ;; *) fail "$file looks into $entry" ;; esac
  done
  readelf -d "$file" | grep -q 'SYMBOLIC' && fail "$file is bound to itself"
done
for library in rkcfg rkos rkptp; do
  readelf -d bin/corvel | grep -q "NEEDED.*\[lib$library.so\]" || fail "bin/corvel does not need lib$library.so"
done
exit $code
