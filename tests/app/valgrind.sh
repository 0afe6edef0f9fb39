#!/bin/sh
# SPDX-License-Identifier: MIT
#
# valgrind.sh BIN QUITAFTER SUPPRESSIONS: starts the program, lets it run for ten seconds, closes it. No error may be
# found, and it has to end by itself.
export CORVEL_QUIT_AFTER_MS=10000 LD_PRELOAD="$2"
exec valgrind --quiet --error-exitcode=99 --leak-check=full --errors-for-leak-kinds=none \
  --trace-children=no --suppressions="$3" --num-callers=30 "$1/corvel"
