#!/bin/sh
# Builds the archive reader fuzz target with clang++ (libFuzzer, AddressSanitizer,
# UndefinedBehaviorSanitizer) in a build folder of its own and runs it.
#
#   run-fuzzer.sh [seconds (default 60)] [build folder (default <repo>/build-fuzz)]
#
# The committed seeds in tests/fuzz/corpus are copied into a working corpus inside the build
# folder; new inputs and crash reproducers stay there (fuzz-artifacts/). Commit a reproducer
# into tests/fuzz/corpus only once the bug it shows is fixed, so the normal test run keeps it.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../.." && pwd)
seconds=${1:-60}
build=${2:-$root/build-fuzz}
mkdir -p "$build"
flags="-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer -g"

CC=clang CXX=clang++ cmake -S "$root" -B "$build" -DBUILD_TESTING=ON -DMARLOUSS_FUZZER=ON \
    -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_C_FLAGS="$flags" -DCMAKE_CXX_FLAGS="$flags" >"$build/configure.log" 2>&1 ||
    { cat "$build/configure.log"; exit 1; }
cmake --build "$build" --target archive_fuzzer -j2

work="$build/fuzz-corpus"
artifacts="$build/fuzz-artifacts"
mkdir -p "$work" "$artifacts"
cp "$here"/corpus/* "$work"/
export ASAN_OPTIONS="${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=1}"
export UBSAN_OPTIONS="${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}"
exec "$build/bin/archive_fuzzer" -max_total_time="$seconds" -timeout=20 -rss_limit_mb=2048 \
    -max_len=262144 -artifact_prefix="$artifacts/" "$work"
