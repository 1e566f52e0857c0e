#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# A program that waits in its event loop, while a shell pulls a plug and puts it back:
#
#   loop.sh <program...>
set -eu
mkfifo said
"$@" >said &
program=$!
exec 4<said
while read -r line <&4; do
  echo "$line"
  if [ "$line" = listening ]; then
    "$VORNSH" --connect "$VORN_CARD" -c 'link 1/1/3 down; link 1/1/3 up'
  fi
done
wait "$program"
