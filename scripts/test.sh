#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test.
# TW_SANITIZE=1 runs the same suite under ASan and UBSan.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh
scripts/build.sh
if [ "${TW_SANITIZE:-0}" = 1 ]; then BUILD=${BUILD:-build-asan}; else BUILD=${BUILD:-build}; fi
export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}
ctest --test-dir "$BUILD" --output-on-failure -j"$(nproc)"
