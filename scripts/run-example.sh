#!/usr/bin/env bash
# The main job: build and install the library, then build and run the example
# consumer against the installed package.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh

jobs=$(nproc)
cmake -S . -B build/release -G Ninja -DCMAKE_BUILD_TYPE=Release \
  -DQVGUI_BUILD_TESTS=OFF -DQVGUI_BUILD_BENCH=OFF
cmake --build build/release -j"$jobs"
cmake --install build/release --prefix "$PWD/build/install" >/dev/null
cmake -S examples/consumer -B build/consumer -G Ninja -DCMAKE_PREFIX_PATH="$PWD/build/install"
cmake --build build/consumer -j"$jobs"
build/consumer/qvgui_example
