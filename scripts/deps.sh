#!/usr/bin/env bash
# Installs the Debian packages that are missing, as root or through sudo.
#   scripts/deps.sh        what the build, the tests and the benchmarks need
#   scripts/deps.sh tour   only what building tw and the library needs
set -euo pipefail

tour=(
  cmake ninja-build g++ pkg-config
  libicu-dev libfast-float-dev libedit-dev nlohmann-json3-dev
)
tests=(
  python3 libgtest-dev libgmock-dev libbenchmark-dev
  python3-numpy python3-pandas clang-format
  python3-dev pybind11-dev python3-pytest
)
case "${1:-all}" in
  tour) packages=("${tour[@]}") ;;
  all) packages=("${tour[@]}" "${tests[@]}") ;;
  *) echo "usage: scripts/deps.sh [tour]" >&2; exit 2 ;;
esac

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"
echo "Installing: ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
