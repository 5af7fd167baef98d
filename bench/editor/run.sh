#!/bin/sh
# Builds bench_editor and runs it offscreen. Usage: bench/editor/run.sh [build folder] [runs]
set -e
here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../.." && pwd)
build=${1:-"$root/build"}
[ $# -gt 0 ] && shift
if [ ! -f "$build/CMakeCache.txt" ]; then
  cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release >/dev/null
fi
cmake --build "$build" --target bench_editor -j2 >/dev/null
QT_QPA_PLATFORM=${QT_QPA_PLATFORM:-offscreen} exec "$build/bin/bench_editor" "$@"
