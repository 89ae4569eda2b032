#!/usr/bin/env bash
# A first look: installs what is missing for tw alone, builds tw and the
# library (not the tests or the benchmarks), and runs the tour.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh tour
TW_TESTS=OFF scripts/build.sh tw
cd examples && ../build/tw tour.tw
