#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# Runs a command beside vornd, in a folder where it serves the sockets card and, read-only, reader:
#
#   with_vornd.sh <vornd|vornd...> <script of this folder> <command...>
#
# Of several vornd the first that is there is started. The command finds the socket in VORN_CARD and
# the shell of the same build in VORNSH. Exit status 77: there is no vornd.
set -eu
cards=$1
script=$2
shift 2

vornd=
old_ifs=$IFS
IFS='|'
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
# Scripts run from there, so that messages name them without a path.
cp "$(dirname "$0")"/*.vorn "$work"
cd "$work"
mkfifo log
"$vornd" --listen card --readonly-socket reader "$script" >/dev/null 2>log &
daemon=$!
exec 3<log
ready=
while [ -z "$ready" ] && read -r line <&3; do
  case $line in
    *"is served at"*) ready=yes ;;
    *) echo "$line" ;;
  esac
done
[ -n "$ready" ]

export VORN_CARD="$work/card"
VORNSH=$(dirname "$vornd")/../shell/vornsh
export VORNSH
"$@"
kill "$daemon"
wait "$daemon"
daemon=
[ ! -e "$work/card" ]
