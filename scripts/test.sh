#!/usr/bin/env bash
# Installs what the build needs, builds everything and runs the test suite.
# Usage: scripts/test.sh [build-dir] [extra cmake arguments...]
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
"$top/scripts/deps.sh"
build=${1:-"$top/build"}
shift || true
jobs=$(nproc)
cmake -S "$top" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DZQ_BUILD_TESTS=ON -DZQ_BUILD_BENCH=ON "$@"
cmake --build "$build" -j "$jobs"
ctest --test-dir "$build" --output-on-failure -j "$jobs"
