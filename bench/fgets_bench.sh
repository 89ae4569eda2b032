#!/bin/sh
# Builds and runs the fgets benchmark: a 100 MB file of 80-character lines
# read by a C getline loop, by fgets called from C++, and by fgets in a tw
# loop. Usage: bench/fgets_bench.sh [BUILD_DIR] [extra fgets_bench options]
set -e
here=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$here/build-release}
[ $# -gt 0 ] && shift
cmake -S "$here" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null
ninja -C "$build" -j2 fgets_bench tw twfileio >/dev/null
exec "$build/bench/fgets_bench" --tw "$build/tw" "$@"
