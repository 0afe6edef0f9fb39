#!/bin/sh
# SPDX-License-Identifier: MIT
#
# exports.sh LIBRARY HEADER...: the library exports every function that its installed headers declare.
set -eu
library=$1
shift
symbols=$(nm --dynamic --defined-only --demangle "$library" | sed 's/^[0-9a-f]* [A-Za-z] //')

# One declaration a line: "name" or "Class::name" of every function without a body. Signals have theirs from
# moc, so they count.
declared() {
  sed -e 's://.*$::' -e '/^ *#/d' "$@" | awk '
    /^(class|struct) [A-Za-z]+( final)?( :.*)? *\{?$/ && !/;/ { class = $2; sub(/:$/, "", class) }
    /^};/ { class = ""; line = ""; next }
    /^}/ { line = ""; next }
    line == "" && /^        / { next } # members of a class inside a class: theirs alone
    {
      line = line " " $0
      if ($0 !~ /[;{}:]$/) next
      text = line; line = ""
      if (text !~ /;$/ || text !~ /\(/ || text ~ /= *(0|delete|default|\{.*\}) *;|\{|\(\*|using |^ *return|friend |typedef/) next
      head = text; sub(/\(.*/, "", head)
      if (head ~ /=|Q_OBJECT|Q_DECLARE|Q_PROPERTY/) next
      sub(/.*[ *&]/, "", head)
      if (head ~ /^~?[A-Za-z_][A-Za-z0-9_]*$/) print (class == "" ? "" : class "::") head
    }' | sort -u
}

count=0
missing=0
for name in $(declared "$@"); do
  count=$((count + 1))
  if ! printf '%s\n' "$symbols" | grep -qF "$name("; then
    echo "declared, but not exported: $name"
    missing=$((missing + 1))
  fi
done
echo "$count functions declared, $missing of them not exported"
[ "$count" -ge 100 ] && [ "$missing" -eq 0 ]
