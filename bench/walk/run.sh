#!/bin/sh
# Builds bench_walk and runs it on catalogs of 10,000 and 50,000 elements with 40 attributes
# (generated on the first run and reused afterwards), then prints the peak memory of the
# largest run against the smallest's. Usage: bench/walk/run.sh [build folder] [bench_walk options]
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
peaks=""
for n in ${ELEMENTS:-10000 50000}; do
  out=$("$build/bin/bench_walk" --db "$build/bench-data/walk-${n}x40.db" --elements "$n" "$@")
  printf '%s\n' "$out"
  peaks="$peaks $n:$(printf '%s\n' "$out" | sed -n 's/^peak memory: \([0-9.]*\) MiB.*/\1/p')"
done
# Flat memory: the peak of the largest walk over the smallest's.
printf '%s\n' "$peaks" | awk '{
  if (NF < 2) exit
  split($1, a, ":"); split($NF, b, ":")
  printf "peak memory %s elements / %s elements: %.2f\n", b[1], a[1], b[2] / a[2]
}'
