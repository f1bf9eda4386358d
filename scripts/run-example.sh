#!/usr/bin/env bash
# The main job: install what is missing, build and install the library, then
# render the sample figures (a filled contour with a colour bar, a lit 3-D
# surface, a logarithmic line plot with markers and TeX labels) and a first
# figure from the example consumer built against the installed package.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh

jobs=$(nproc)
out=${1:-build/figures}
cmake -S . -B build/release -G Ninja -DCMAKE_BUILD_TYPE=Release \
  -DQVGUI_BUILD_TESTS=OFF -DQVGUI_BUILD_BENCH=OFF
cmake --build build/release -j"$jobs"
cmake --install build/release --prefix "$PWD/build/install" >/dev/null
cmake -S examples/consumer -B build/consumer -G Ninja -DCMAKE_PREFIX_PATH="$PWD/build/install"
cmake --build build/consumer -j"$jobs"

mkdir -p "$out"
for sample in contourf surface lines; do
  build/install/bin/qvplot --sample "$sample" -o "$out/$sample.png"
done
build/install/bin/qvplot --sample surface -o "$out/surface.pdf"
build/consumer/qvgui_example "$out/example.png"
echo "Figures are in $out/"
