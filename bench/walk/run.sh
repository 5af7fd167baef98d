#!/bin/sh
# Builds bench_walk and runs it on a 10,000-element, 40-attribute catalog (generated on the
# first run and reused afterwards). Usage: bench/walk/run.sh [build folder] [bench_walk options]
set -e
here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../.." && pwd)
build=${1:-"$root/build"}
[ $# -gt 0 ] && shift
if [ ! -f "$build/CMakeCache.txt" ]; then
  cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release >/dev/null
fi
cmake --build "$build" --target bench_walk -j2 >/dev/null
mkdir -p "$build/bench-data"
exec "$build/bin/bench_walk" --db "$build/bench-data/walk-10000x40.db" "$@"
