#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# figures.sh SCRIPT FOLDER: does tools/check-figures see what is over a limit, and only that? On trees of one product file.
set -u
script=$1
work=$2
bad=0

# tree: a product file from standard input, with three lines of tests for each of its lines.
tree() {
  rm -rf "$work" && mkdir -p "$work/app" "$work/tests/app" || exit 1
  cat >"$work/app/a.cpp"
  for _ in 1 2 3; do cat "$work/app/a.cpp"; done >"$work/tests/app/a.cpp"
}

# expect CODE TEXT: the verdict on this tree, and a text that stands in it.
expect() {
  "$script" "$work" >"$work/output" 2>&1
  local got=$?
  [ "$got" = "$1" ] && grep -qF -- "$2" "$work/output" && return 0
  echo "ended with $got, not $1, or without \"$2\":"
  cat "$work/output"
  bad=1
}

# body LINES: a function of so many lines among ten short ones.
body() {
  for i in {1..20}; do printf 'void f%s()\n{\n}\n' "$i"; done
  printf 'void g()\n{\n'
  for ((i = 3; i < $1; i++)); do echo '    f1();'; done
  printf '}\n'
}

body 60 | tree
expect 0 'function, longest                   60 of 60'
body 61 | tree
expect 1 '61 app/a.cpp:61 g'

{ body 10; cat; } <<'END_OF_CODE' | tree
void f(int a)
{
    for (;;) {
        // the depth of a comment does not count
        switch (a) {
        case 1:
            if (a)
                f(0);
            break;
        case 2: f(1); break;
        }
        if (a) {
            f(2);
        } else {
            f(3);
        }
    }
}
END_OF_CODE
expect 0 'nesting, deepest                     3 of 3'

tree <<'END_OF_CODE'
void f(int a)
{
    for (;;)
        while (a)
            if (a)
                if (a > 1)
                    f(0);
}
END_OF_CODE
expect 1 '4 app/a.cpp:1 f'

body 10 | tree
head -60 "$work/app/a.cpp" >"$work/tests/app/a.cpp"
expect 1 'UNDER'
yes '// a line' | head -431 | tree
echo 'void f() {}' >>"$work/app/a.cpp"
expect 1 '432 app/a.cpp'
exit $bad
