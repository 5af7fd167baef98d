#!/usr/bin/env bash
# One entry for a fresh Debian 12 machine:
#   ./build.sh        install what is missing, build, run the sandbox host on a sample catalog
#   ./build.sh test   the same, then every test
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
mode=${1:-run}
build=${MARLOUSS_BUILD_DIR:-$here/build}

packages=(
  build-essential cmake pkg-config git
  qt6-base-dev qt6-base-dev-tools qt6-svg-dev libgl-dev
  libzip-dev libjsoncpp-dev libpugixml-dev libboost-dev libsqlite3-dev
  sqlite3 zip unzip fonts-dejavu-core qt6-translations-l10n
  clang libclang-rt-14-dev g++-mingw-w64-x86-64-posix
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if ((${#missing[@]})); then
  echo "== installing: ${missing[*]}"
  sudo=""
  [ "$(id -u)" -eq 0 ] || sudo="sudo"
  $sudo apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

jobs=$(nproc 2>/dev/null || echo 2)
echo "== building in $build"
cmake -S "$here" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DBUILD_TESTING=ON >/dev/null
cmake --build "$build" -j "$jobs"

# The main job: the sandbox host on a sample catalog. Without a display it runs headless,
# calls every export with scripted answers and saves a picture of each dialog.
run_main() {
  local out="$build/sandbox-run"
  mkdir -p "$out"
  local args=(--catalog "$out/sample.db" --shots "$out")
  if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ]; then
    echo "== no display: running the sandbox host headless"
    QT_QPA_PLATFORM=offscreen "$build/bin/marlouss-sandbox" --headless "${args[@]}"
  else
    "$build/bin/marlouss-sandbox" "${args[@]}"
  fi
}

case "$mode" in
  run)
    run_main
    ;;
  test)
    run_main
    echo "== running every test"
    cd "$build"
    QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j "$jobs" --timeout 600
    ;;
  *)
    echo "usage: $0 [run|test]" >&2
    exit 2
    ;;
esac
