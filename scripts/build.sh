#!/usr/bin/env bash
# Configures and builds into $BUILD (default build/): every target, or only
# the targets given as arguments (scripts/build.sh tw). TW_SANITIZE=1 builds
# with ASan and UBSan into build-asan/ instead. TW_TESTS=OFF configures
# without the tests, so that GoogleTest need not be installed.
set -euo pipefail
cd "$(dirname "$0")/.."
if [ "${TW_SANITIZE:-0}" = 1 ]; then
  BUILD=${BUILD:-build-asan}
  extra=(-DTW_SANITIZE=ON -DTW_BUILD_BENCH=OFF)
else
  BUILD=${BUILD:-build}
  extra=()
fi
cmake -S . -B "$BUILD" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DTW_BUILD_TESTS="${TW_TESTS:-ON}" "${extra[@]}" >/dev/null
ninja -C "$BUILD" -j"$(nproc)" "$@"
