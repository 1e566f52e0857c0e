# SPDX-License-Identifier: Apache-2.0
#
# FRR beside a card, for labs.
# shellcheck shell=bash disable=SC2154 # of scripts/lab

# frr CARD DAEMON...: starts zebra and other daemons of FRR. The configuration of each is in
# $files/CARD.frr/DAEMON.conf, if there is one.
frr() {
  local card=$1 daemon
  local folder=$files/$card.frr
  shift
  mkdir -p "$folder"
  for daemon in zebra "$@"; do touch "$folder/$daemon.conf"; done
  chown -R frr:frr "$folder"
  for daemon in zebra "$@"; do
    run "$card" "/usr/lib/frr/$daemon" -i "$folder/$daemon.pid" -z "$folder/zserv.api" \
      -f "$folder/$daemon.conf" --vty_socket "$folder"
    [ "$daemon" != zebra ] || within 10 test -S "$folder/zserv.api"
  done
}

# vty CARD COMMAND: asks FRR.
vty() { vtysh --vty_socket "$files/$1.frr" -c "$2"; }
