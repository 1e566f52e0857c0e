#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# A C program and vornd as two processes on one card:
#
#   c_client.sh <what it prints> <vornd;vornd...> <host to preload, or nothing> <program...>
#
# Of several vornd the first that is there is started.
set -eu
expected=$1
cards=$2
remote=$3
shift 3

vornd=
old_ifs=$IFS
IFS=';'
for card in $cards; do
  if [ -z "$vornd" ] && [ -x "$card" ]; then vornd=$card; fi
done
IFS=$old_ifs
if [ -z "$vornd" ]; then
  echo "SKIPPED: no vornd of this machine's architecture is built: $cards"
  exit 77
fi

work=$(mktemp -d)
daemon=
finish() {
  if [ -n "$daemon" ]; then kill "$daemon" 2>/dev/null || true; fi
  rm -rf "$work"
}
trap finish EXIT

mkfifo "$work/log"
"$vornd" --listen "$work/card" 2>"$work/log" &
daemon=$!
exec 3<"$work/log"
ready=
while [ -z "$ready" ] && read -r line <&3; do
  echo "$line"
  case $line in *"is served at"*) ready=yes ;; esac
done
[ -n "$ready" ]

export VORN_CARD="$work/card"
if [ -n "$remote" ]; then
  LD_PRELOAD=$remote "$@" >"$work/out"
else
  "$@" >"$work/out"
fi
diff -u "$expected" "$work/out"
kill "$daemon"
wait "$daemon"
daemon=
[ ! -e "$work/card" ]
echo "the same as in one process"
