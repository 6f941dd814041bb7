#!/usr/bin/env bash
# The main job: installs what the build needs, builds zqrec if it is not
# built yet, and decodes the payroll sample (written by a COBOL program) to
# CSV on standard output.
# Usage: scripts/run-main.sh [build-dir]
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-"$top/build"}
"$top/scripts/deps.sh" >&2
if [ ! -x "$build/bin/zqrec" ]; then
  cmake -S "$top" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DZQ_BUILD_TESTS=OFF -DZQ_BUILD_BENCH=OFF >&2
  cmake --build "$build" --target zqrec -j "$(nproc)" >&2
fi
cd "$top"
exec "$build/bin/zqrec" decode examples/records/payroll.layout examples/records/payroll.dat
