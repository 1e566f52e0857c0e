#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# run.sh PYTHON FILE [pytest option...]: runs one file of tests under pytest; 77 where pytest, Scapy,
# or mypy for a file that imports it, is missing.

python=$1
shift
modules="pytest scapy"
if grep -q '^import mypy' "$1"; then modules="$modules mypy"; fi
for module in $modules; do
  if ! "$python" -c "import $module" 2>/dev/null; then
    echo "SKIPPED: $python has no $module; Debian's package is python3-$module"
    exit 77
  fi
done
exec "$python" -B -m pytest -q -p no:cacheprovider "$@"
