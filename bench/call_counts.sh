#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# Counts the instructions that a call executes inside the library, with valgrind's callgrind:
#
#   bench/call_counts.sh <call_counts program> <library>
#
# What the host and the C and C++ runtime execute for the call is not counted. A call is made 0
# times and 1,000 times, so that start and end fall out.

set -eu
program=$1
library=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# executed <call> <times>: instructions executed in the library.
executed() {
  valgrind -q --tool=callgrind --callgrind-out-file="$work/out" --compress-strings=no \
    "$program" "$library" "$1" "$2" >"$work/log" 2>&1 || {
    cat "$work/log" >&2
    exit 1
  }
  # Behind a "calls=" line stands the cost of the callee, which has lines of its own.
  awk '/^ob=/ { ours = /libvornlcapi/ } /^calls=/ { getline; next }
       ours && /^[0-9+*-]/ { sum += $2 } END { print sum + 0 }' "$work/out"
}

# count <call>: instructions for one call.
count() { echo $((($(executed "$1" 1000) - $(executed "$1" 0)) / 1000)); }

get=$(count get)
set=$(count set)
printf '%-34s %4s %5s\n' 'inside the library' 'now' 'goal'
printf '%-34s %4d %5d\n' \
  'a getter' "$get" 38 \
  'a call without a port' "$(count no_port)" 22 \
  'a setter over one member' "$set" 74 \
  'the C form of a getter, more by' $(($(count c_get) - get)) 18 \
  'the C form of a setter, more by' $(($(count c_set) - set)) 10
