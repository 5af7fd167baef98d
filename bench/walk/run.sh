#!/bin/sh
# Builds bench_walk and runs it on catalogs of 10,000 and 50,000 elements with 40 attributes
# (generated on the first run and reused afterwards): the peak memory of the two should be
# about the same. Usage: bench/walk/run.sh [build folder] [bench_walk options]
# ELEMENTS="10000" bench/walk/run.sh runs one size only.
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
for n in ${ELEMENTS:-10000 50000}; do
  "$build/bin/bench_walk" --db "$build/bench-data/walk-${n}x40.db" --elements "$n" "$@"
done
