#!/usr/bin/env bash
# Installs the Debian packages the build and the test suite need, if any are missing.
set -euo pipefail

packages=(cmake ninja-build g++ clang libclang-rt-14-dev libboost-dev libgtest-dev libgmock-dev libbenchmark-dev cppcheck python-matplotlib-data
  pkg-config libcairo2-dev libfreetype-dev libpng-dev fonts-urw-base35
  libcli11-dev python3-matplotlib)
# The peer comparisons under bench/ need more; QVGUI_BENCH_DEPS=1 adds them.
bench_packages=(python3-pil python3-numpy)
if [[ "${QVGUI_BENCH_DEPS:-0}" == 1 ]]; then
  packages+=("${bench_packages[@]}")
fi
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if ((${#missing[@]})); then
  echo "Installing: ${missing[*]}"
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -qq
  apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
