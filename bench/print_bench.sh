#!/bin/sh
# Builds and runs the print benchmark: ten million doubles through fprintf
# and sprintf of the library, a C loop, a std::to_chars loop and
# numpy.savetxt, with the ratios. Usage: bench/print_bench.sh [BUILD_DIR] [N]
set -e
here=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$here/build-release}
n=${2:-10000000}
cmake -S "$here" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null
ninja -C "$build" -j2 print_bench twfileio >/dev/null
python=python3
$python -c 'import numpy' 2>/dev/null || python=/usr/bin/python3
savetxt=$($python "$here/bench/print_savetxt.py" "$n")
exec "$build/bench/print_bench" --lib "$build" --n "$n" --savetxt "$savetxt"
