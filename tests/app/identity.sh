#!/bin/sh
# SPDX-License-Identifier: MIT
#
# identity.sh BIN QUITAFTER: what the program calls itself, and that its file dialogs are the toolkit's own.
export CORVEL_QUIT_AFTER_MS=0 LD_PRELOAD="$2"
told=$("$1/corvel") || exit 1
echo "$told"
[ "$told" = "Halvect corvel 8.0.0.0 1" ]
