#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
#
# A lab whose first process is killed leaves nothing: no process of its own, no namespace, no
# interface, no file.
#
#   lab_leaves_nothing.sh <scripts/lab> <build tree>

set -euo pipefail

traces() {
  ip -br link
  ip netns list
  ls /run
}

before=$(traces)
mkfifo "${TMPDIR:-/tmp}/lab.$$"
exec 3<>"${TMPDIR:-/tmp}/lab.$$"
rm "${TMPDIR:-/tmp}/lab.$$"

"$1" router --build "$2" --no-install --shell <&3 >&3 2>&1 &
lab=$!
while read -r -t 60 line <&3; do
  case $line in
    skipped:*)
      echo "$line"
      exit 77
      ;;
    The\ lab\ stands*) break ;;
  esac
done

# The processes of a lab are in the process namespace of the child of its first one.
child=$(pgrep -P $lab)
space=$(readlink "/proc/$child/ns/pid")
in_lab() {
  for process in /proc/[0-9]*; do readlink "$process/ns/pid" || true; done 2>/dev/null |
    grep -cFx "$space" || true
}
running=$(in_lab)
[ "$running" -gt 1 ] || { echo "the lab runs $running processes" && exit 1; }

kill -9 $lab
wait $lab 2>/dev/null || true
for _ in $(seq 100); do
  left=$(in_lab)
  [ "$left" -ne 0 ] || break
  read -r -t 0.05 <&3 || true
done
[ "$left" -eq 0 ] || { echo "$left of $running processes are left" && exit 1; }
after=$(traces)
[ "$after" = "$before" ] || { diff <(echo "$before") <(echo "$after") && exit 1; }
