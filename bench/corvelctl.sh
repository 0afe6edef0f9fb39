#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# corvelctl.sh BIN: how long, and how much memory, corvelctl needs with 1,000 channels of 8 flows, and how fast it starts.
# Needs /usr/bin/time for the memory; prints the median of five runs of each.
bin=$1
home=$(mktemp -d)
trap 'rm -rf "$home"' EXIT
export XDG_CONFIG_HOME="$home"
cd "$home" || exit 1
corvelctl() { "$bin/corvelctl" "$@"; }

corvelctl set server channels=1000 -q > /dev/null
corvelctl set 0 type=SMPTE-2110 format=1080p50 clock=sw-ptp domain=127 gm= channels=8 flows=8 ptime=125 flow-mode=flows -q > /dev/null
for place in 0/video '0/audio/*' 0/anc; do
  corvelctl set "$place" rx.src=10.0.0.1:5004 rx.dst=239.1.0.1:5004 rx.use=all tx.src=10.0.0.1:5004 tx.dst=239.2.0.1:5004 \
    tx.use=all if=10.0.0.1 -q > /dev/null
done
corvelctl copy 0 1-999 --step dst=0.0.1.0 -y -q > /dev/null
corvelctl dump full.json
corvelctl table export full.csv
corvelctl config new empty

run() { # NAME COMMAND...
  local name=$1 ms kb
  shift
  for _ in 1 2 3 4 5; do
    /usr/bin/time -f '%e %M' -o t "$bin/corvelctl" "$@" > /dev/null 2>&1
    tail -1 t
  done | sort -n | sed -n 3p | while read -r ms kb; do printf '%-24s %6s s %8s kB\n' "$name" "$ms" "$kb"; done
}

printf '%s values\n' "$("$bin/rkcfg" list | wc -l)"
run show show
run "diff (same)" diff store full.json
run "diff (other)" diff store empty
run dump dump
run "restore (same)" restore full.json -y
run "table export" table export out.csv
run "table import (same)" table import full.csv --apply
run "restore (empty store)" -c empty restore full.json -y
run "--version" --version
start=$(date +%s%N)
for _ in $(seq 200); do "$bin/corvelctl" --version > /dev/null; done
printf 'start                    %6s us\n' $((($(date +%s%N) - start) / 200000))
