# SPDX-License-Identifier: Apache-2.0
#
# What the scripts share; sourced, not run. Bash, run from the root of the tree.
#
# A command that fails ends the script, in front of a pipe and inside $( ) as well. What bash lets
# pass are a pipe in a condition, and a $( ) among the arguments of a command or in the list of a for
# loop: their output goes into a variable or a file first.
# shellcheck shell=bash

set -euo pipefail
shopt -s inherit_errexit

say() { printf '%s\n' "$*"; }
die() {
  printf '%s: %s\n' "$(basename "$0")" "$*" >&2
  exit 1
}

# Runs a command as root.
as_root() {
  if [ "$(id -u)" -eq 0 ]; then
    "$@"
  elif command -v sudo >/dev/null 2>&1; then
    sudo "$@"
  else
    die "this needs root, and there is no sudo; as root, run: $*"
  fi
}

# Sets $missing to the packages that are missing. Each argument is <Debian package>=<probe>; the
# probe is a command, or a file when it begins with a slash.
find_missing() {
  missing=
  for entry in "$@"; do
    package=${entry%%=*}
    probe=${entry#*=}
    case $probe in
      /*) [ -e "$probe" ] || missing="$missing $package" ;;
      *) command -v "$probe" >/dev/null 2>&1 || missing="$missing $package" ;;
    esac
  done
}

install_missing() {
  say "Installing with apt:$missing"
  # shellcheck disable=SC2086 # the list of packages is meant to be split
  as_root apt-get -q update </dev/null &&
    as_root env DEBIAN_FRONTEND=noninteractive \
      apt-get -q -y install --no-install-recommends $missing </dev/null
}

has_apt() { command -v apt-get >/dev/null 2>&1; }

# Installs what is missing. A machine that has every probe needs no package manager.
need() {
  find_missing "$@"
  [ -n "$missing" ] || return 0
  has_apt || die "there is no apt here; please install what these Debian packages hold:$missing"
  install_missing || die "apt could not install:$missing"
}

# The same for what a build can do without: says what it does without.
want() {
  find_missing "$@"
  [ -n "$missing" ] || return 0
  if ! has_apt || ! (install_missing); then
    say "Left out is what needs these Debian packages, which are missing:$missing"
  fi
}

need_native_tools() {
  need cmake=cmake ninja-build=ninja g++=g++
}

# The packages that a preset's tests need beyond nothing at all. Tests of Linux cables make their
# networks with ip, docs/coverage.md is checked with Python, an installed copy is found with
# pkg-config; vorn-agent speaks netlink by libnl.
need_for_preset() {
  need_native_tools
  need iproute2=ip python3=python3 pkg-config=pkg-config
  case $1 in
    ppc)
      need g++-powerpc-linux-gnu=powerpc-linux-gnu-g++ qemu-user=qemu-ppc \
        googletest=/usr/src/googletest/CMakeLists.txt
      ;;
    old-abi) need googletest=/usr/src/googletest/CMakeLists.txt ;;
    *)
      need libnl-3-dev=/usr/include/libnl3/netlink/netlink.h
      need libgtest-dev=/usr/include/gtest/gtest.h libgmock-dev=/usr/include/gmock/gmock.h \
        libsystemd-dev=/usr/include/systemd/sd-daemon.h
      ;;
  esac
  # Presets with sanitizers or for another machine leave the Python module out.
  case $1 in release | clang) want "${python_packages[@]}" ;; esac
}

# For the Python module and its tests: Debian's own Python, as its packages of pytest and Scapy are
# for that one.
python_packages=(python3=/usr/bin/python3 python3-dev=/usr/bin/python3-config
  pybind11-dev=/usr/lib/cmake/pybind11/pybind11Config.cmake
  python3-pytest=/usr/lib/python3/dist-packages/pytest
  python3-scapy=/usr/lib/python3/dist-packages/scapy
  python3-mypy=/usr/lib/python3/dist-packages/mypy)

jobs() { nproc 2>/dev/null || echo 2; }

# In CI, and there alone, warnings are errors.
werror() { if [ -n "${CI-}" ]; then echo ON; else echo OFF; fi; }

# configure <preset> [option...]: configures build/<preset> where it is not, or not with these
# options (-DNAME=VALUE); leaves it alone otherwise.
configure() {
  preset=$1
  shift
  set -- "$@" "-DVORN_WERROR=$(werror)"
  cache=build/$preset/CMakeCache.txt
  current=yes
  [ -f "build/$preset/build.ninja" ] && [ -f "$cache" ] || current=no
  for option; do
    name=${option#-D}
    grep -q "^${name%%=*}:[A-Z]*=${name#*=}\$" "$cache" 2>/dev/null || current=no
  done
  [ $current = yes ] || cmake --preset "$preset" "$@"
}

# results <preset>: sets $good, $bad and $skipped from the last run of its tests; fails where there
# was none.
results() {
  [ -f "build/$1/tests.xml" ] || return 1
  bad=$(junit_count "$1" failures)
  skipped=$(($(junit_count "$1" skipped) + $(junit_count "$1" disabled)))
  good=$(($(junit_count "$1" tests) - bad - skipped))
}

# The value of one count in the head of the JUnit file.
junit_count() {
  sed -n "/^[[:space:]]*$2=\"\([0-9]*\)\".*/{s//\1/p;q};/<testcase/q" "build/$1/tests.xml"
}

# run_tests <preset> [ctest option...]: runs build/<preset>'s tests and closes with one line of
# counts.
run_tests() {
  preset=$1
  shift
  rm -f "build/$preset/tests.xml"
  status=0
  ctest --preset "$preset" -j "$(jobs)" "$@" || status=$?
  results "$preset" || die "ctest left no results for preset $preset"
  say "$preset: $good passed, $bad failed, $skipped skipped"
  return $status
}

# test_preset <preset> [ctest option...]: installs what it needs, builds it, runs its tests.
test_preset() {
  need_for_preset "$1"
  configure "$1" -DVORN_BUILD_TESTS=ON
  cmake --build --preset "$1"
  run_tests "$@"
}
