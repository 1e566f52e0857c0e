#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# Counts the instructions that the card executes for a frame, with valgrind's callgrind:
#
#   bench/forward_counts.sh <forward_bench program>
#
# One line a row of the benchmark: its name, and the instructions for each frame that comes in, the
# generator's copy and the drains included.

set -eu
program=$1
frames=131072 # that a row sends in a round
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

for row in 'L2 known unicast' 'L2 flood to 8 ports' 'routed IPv4' '1,000 masked flows'; do
  # Only what stands below Setup::run() counts.
  valgrind -q --tool=callgrind --callgrind-out-file="$work/out" --toggle-collect='*::Setup::run()*' \
    "$program" "$row" 1 >"$work/log" 2>&1 || {
    cat "$work/log" >&2
    exit 1
  }
  awk -v row="$row" -v frames="$frames" \
    '/^(summary|totals):/ { sum = $2 } END { printf "%-34s %6.0f\n", row, sum / frames }' "$work/out"
done
