# SPDX-License-Identifier: Apache-2.0
#
# Completion for vornsh, vornd and vorn-agent in bash. The options are those that a program's --help
# has; it is installed under each program's name.
# shellcheck shell=bash

_vorn_program() {
  local program=$1 current=$2 previous=$3
  case $previous in
    --group | --readonly-group) mapfile -t COMPREPLY < <(compgen -g -- "$current") ;;
    --wires)
      mapfile -t COMPREPLY < <(compgen -W "$(ip netns list 2>/dev/null | cut -d ' ' -f 1)" -- "$current")
      ;;
    --clients | --prefix | -c) COMPREPLY=() ;;
    *)
      if [[ $current == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$("$program" --help 2>/dev/null |
          sed -n 's/^  \(-[a-z-]*\)\(, \(--[a-z-]*\)\)\{0,1\}.*/\1 \3/p')" -- "$current")
      else
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
      fi
      ;;
  esac
}
complete -o filenames -F _vorn_program vornsh vornd vorn-agent
