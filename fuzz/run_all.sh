#!/usr/bin/env bash
# Runs every libFuzzer target (each fuzz/*_fuzz.cc, built in the fuzz build)
# for SECONDS each, a few side by side, and prints the figures of each run:
# executions, coverage, corpus, peak memory, wall time, and what was found.
#
#   fuzz/run_all.sh SECONDS [TARGET...]
#
# The fuzz build: CC=clang-14 CXX=clang++-14 cmake -S . -B build-fuzz -G Ninja
# -DTW_FUZZ=ON -DTW_BUILD_BENCH=OFF, then ninja -C build-fuzz. BUILD names
# another build folder; JOBS (default 3) the targets run at once. Corpora
# persist in $BUILD/fuzz-corpus/NAME, logs in $BUILD/fuzz-logs, crashes in
# $BUILD/fuzz-artifacts. On a shared machine run it at low priority:
#   nice -n 19 fuzz/run_all.sh 600
# The exit status is non-zero when any target found something.
set -euo pipefail
seconds=${1:?usage: fuzz/run_all.sh SECONDS [TARGET...]}
shift
cd "$(dirname "$0")/.."
build=${BUILD:-build-fuzz}
jobs=${JOBS:-3}

if [ "$#" -gt 0 ]; then
  targets=("$@")
else
  targets=()
  for source in fuzz/*_fuzz.cc; do targets+=("$(basename "$source" .cc)"); done
fi
mkdir -p "$build/fuzz-logs" "$build/fuzz-artifacts"

run_one() {
  local name=$1 seconds=$2 build=$3
  local program="$build/fuzz/$name"
  local corpus="$build/fuzz-corpus/$name"
  local log="$build/fuzz-logs/$name.log"
  mkdir -p "$corpus"
  if [ ! -x "$program" ]; then
    echo "$name: not built ($program)"
    return 1
  fi
  local start end status=0
  start=$(date +%s)
  "$program" -max_total_time="$seconds" -print_final_stats=1 -timeout=30 -rss_limit_mb=2048 \
    -artifact_prefix="$build/fuzz-artifacts/$name-" "$corpus" >"$log" 2>&1 || status=$?
  end=$(date +%s)
  local runs cov corpus_size rss
  runs=$(grep -o 'stat::number_of_executed_units: *[0-9]*' "$log" | grep -o '[0-9]*$' || true)
  cov=$(grep -o 'cov: [0-9]*' "$log" | tail -1 | grep -o '[0-9]*' || true)
  corpus_size=$(find "$corpus" -type f | wc -l)
  rss=$(grep -o 'stat::peak_rss_mb: *[0-9]*' "$log" | grep -o '[0-9]*$' || true)
  if [ "$status" -eq 0 ]; then
    echo "$name: ${runs:-?} runs in $((end - start)) s, cov ${cov:-?}, corpus $corpus_size, peak ${rss:-?} MB, nothing found"
  else
    echo "$name: FOUND something (exit $status) after $((end - start)) s; see $log and $build/fuzz-artifacts/$name-*"
  fi
  return "$status"
}
export -f run_one

printf '%s\n' "${targets[@]}" | xargs -P "$jobs" -I{} bash -c 'run_one "$@"' _ {} "$seconds" "$build"
