#!/usr/bin/env bash
# Installs the Debian packages the build, the tests and the benchmarks need,
# skipping those already present. Runs apt-get as root, or through sudo.
set -euo pipefail

packages=(
  cmake ninja-build g++ pkg-config python3
  libicu-dev libfast-float-dev libedit-dev nlohmann-json3-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  python3-numpy python3-pandas clang-format
)

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
