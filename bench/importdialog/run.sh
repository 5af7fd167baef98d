#!/bin/sh
# Builds bench_import_dialog and ussctl and runs the bench offscreen.
# Usage: bench/importdialog/run.sh [build folder] [bench options: --elements N --runs R]
set -e
here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../.." && pwd)
build=${1:-"$root/build"}
[ $# -gt 0 ] && shift
if [ ! -f "$build/CMakeCache.txt" ]; then
  cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release >/dev/null
fi
cmake --build "$build" --target bench_import_dialog ussctl -j2 >/dev/null
QT_QPA_PLATFORM=${QT_QPA_PLATFORM:-offscreen} exec "$build/bin/bench_import_dialog" "$@"
