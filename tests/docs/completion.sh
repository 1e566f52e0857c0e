#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
#
# What bash offers behind the programs' names.
#
#   completion.sh <completion.bash> <vornsh>

set -euo pipefail
# shellcheck source=/dev/null
. "$1"
program=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
touch "$folder/small.card" "$folder/other.card"
failed=0

# offers <words expected> <current word> <word before>
offers() {
  COMPREPLY=()
  _vorn_program "$program" "$2" "$3"
  if [ "${COMPREPLY[*]}" != "$1" ]; then
    echo "behind '$3 $2' bash offers '${COMPREPLY[*]}' instead of '$1'"
    failed=1
  fi
}

offers "--card --connect" --c vornsh
offers "--echo" --e -v
offers "-v" -v vornsh
offers "$folder/small.card" "$folder/sm" --card
offers "$folder/small.card" "$folder/sm" vornsh
offers "" "" --clients
offers "tty" tty --group  # a group that no user has the name of
complete -p vornsh vornd vorn-agent >/dev/null
exit $failed
