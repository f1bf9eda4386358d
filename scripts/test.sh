#!/usr/bin/env bash
# The whole test suite: static analysis, a warnings-as-errors build with every test, the
# installed package used by the example consumer, the same tests under
# AddressSanitizer and UndefinedBehaviorSanitizer, and a short run of every
# fuzzer (clang).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh

jobs=$(nproc)
fuzz_seconds=${QVGUI_FUZZ_SECONDS:-5}

echo "== Static analysis (cppcheck) =="
cppcheck --quiet --std=c++17 --language=c++ --enable=warning,performance,portability --inline-suppr \
  --error-exitcode=1 -j"$jobs" -I include -I . --suppress=missingIncludeSystem \
  geometry clipping dataspace bridge surface raster lighting window text host tools

echo "== Warnings-as-errors build =="
cmake -S . -B build/werror -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQVGUI_WERROR=ON
cmake --build build/werror -j"$jobs"
ctest --test-dir build/werror --output-on-failure -j"$jobs"

echo "== Installed package and example consumer =="
rm -rf build/install
cmake --install build/werror --prefix "$PWD/build/install" >/dev/null
cmake -S examples/consumer -B build/consumer -G Ninja -DCMAKE_PREFIX_PATH="$PWD/build/install"
cmake --build build/consumer -j"$jobs"
build/consumer/qvgui_example

echo "== AddressSanitizer + UndefinedBehaviorSanitizer build =="
cmake -S . -B build/sanitize -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQVGUI_WERROR=ON \
  -DQVGUI_SANITIZE=ON -DQVGUI_BUILD_BENCH=OFF -DQVGUI_BUILD_TOOLS=OFF
cmake --build build/sanitize -j"$jobs"
ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
  ctest --test-dir build/sanitize --output-on-failure -j"$jobs"

if command -v clang++ >/dev/null && [ -x scripts/run-fuzzers.sh ]; then
  echo "== Fuzzers (${fuzz_seconds} s each) =="
  cmake -S . -B build/fuzz -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER=clang++ \
    -DQVGUI_BUILD_FUZZ=ON -DQVGUI_BUILD_TESTS=OFF -DQVGUI_BUILD_BENCH=OFF -DQVGUI_BUILD_TOOLS=OFF \
    -DQVGUI_SANITIZE=ON -DQVGUI_SUBSYSTEMS="geometry;bridge;dataspace;window;raster"
  cmake --build build/fuzz -j"$jobs"
  scripts/run-fuzzers.sh build/fuzz "$fuzz_seconds"
fi
echo "== All test stages passed =="
