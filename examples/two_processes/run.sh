#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# Three processes on one card: vornd, which has it and serves VORN_CARD; a C program that configures
# it; and a shell, VORNSH, that looks on.
#
#   run.sh <host to preload, or none> <program...>
set -eu
host=$1
shift

if [ "$host" != none ]; then
  LD_PRELOAD=$host "$@"
else
  "$@"
fi
"$VORNSH" --connect "$VORN_CARD" -v -c "show vlan"
"$VORNSH" --connect "$VORN_CARD" -v -c "show lag"
