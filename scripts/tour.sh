#!/usr/bin/env bash
# Installs what is missing, builds, and runs the tour of what works.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh
scripts/build.sh
cd examples && ../build/tw tour.tw
