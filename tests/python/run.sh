#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# run.sh PYTHON FILE [pytest option...]: runs one file of tests under pytest; 77 where pytest or Scapy
# is missing.

python=$1
shift
for module in pytest scapy; do
  if ! "$python" -c "import $module" 2>/dev/null; then
    echo "SKIPPED: $python has no $module; Debian's package is python3-$module"
    exit 77
  fi
done
exec "$python" -B -m pytest -q -p no:cacheprovider "$@"
