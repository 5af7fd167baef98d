#!/bin/sh
# Builds bench_exportdialog and runs it offscreen on a catalog of 50,000 elements in 2,000
# folders (generated on the first run into the build folder and reused afterwards).
# Usage: bench/exportdialog/run.sh [build folder] [bench_exportdialog options]
set -e
here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../.." && pwd)
build=${1:-"$root/build"}
[ $# -gt 0 ] && shift
if [ ! -f "$build/CMakeCache.txt" ]; then
  cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release >/dev/null
fi
cmake --build "$build" --target bench_exportdialog -j2 >/dev/null
mkdir -p "$build/bench-data"
QT_QPA_PLATFORM=${QT_QPA_PLATFORM:-offscreen} exec "$build/bin/bench_exportdialog" \
  --db "$build/bench-data/exportdialog-50000x2000.db" "$@"
