#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# Builds and runs the C and the C++ consumer, and the C story on the shared libraries, with nothing but a compiler and pkg-config, which
# the environment names: CC, CXX, PKG_CONFIG, PKG_CONFIG_LIBDIR, LD_LIBRARY_PATH, EMULATOR (a
# list with semicolons, may be empty).

set -eu
here=$(dirname "$0")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
emulator=$(printf '%s' "${EMULATOR-}" | tr ';' ' ')
if [ -n "$emulator" ]; then
  # The library path is the emulated program's, not the emulator's.
  emulator="$emulator -E LD_LIBRARY_PATH=$LD_LIBRARY_PATH"
  unset LD_LIBRARY_PATH
fi

flags=$("$PKG_CONFIG" --cflags --libs vornlcapi-softcard)
# shellcheck disable=SC2086 # flags and emulator are lists
{
  "$CC" -std=c99 "$here/c/consumer.c" -o "$work/c" $flags
  "$CXX" -std=c++11 "$here/cxx/consumer.cpp" -o "$work/cxx" $flags
  $emulator "$work/c"
  $emulator "$work/cxx"
}

flags=$("$PKG_CONFIG" --cflags --libs vornsoftcard)
# shellcheck disable=SC2086
{
  "$CC" -std=c99 "$here/../capi/story.c" -o "$work/story" $flags
  $emulator "$work/story"
}

# A client of a card in another process, of which none is named.
flags=$("$PKG_CONFIG" --cflags --libs vornremote)
# shellcheck disable=SC2086
{
  "$CC" -std=c99 -I"$here/../../examples" "$here/../../examples/c_client/client.c" \
    "$here/../../examples/two_processes/main.c" -o "$work/remote" $flags
  if $emulator "$work/remote" 2>"$work/said"; then exit 1; fi
  grep -q "failed: start the line card" "$work/said"
}
