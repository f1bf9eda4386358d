#!/bin/sh
# Runs the dithering benchmark of this library and Pillow's Floyd-Steinberg
# quantiser on the same image and palette and prints the ratio of pixels per
# second. Needs Debian's python3-pil and python3-numpy
# (QVGUI_BENCH_DEPS=1 scripts/install-deps.sh installs them).
# Usage: bench/dither_vs_pillow.sh [build-dir]   (a Release build with benchmarks)
set -eu
here=$(cd "$(dirname "$0")" && pwd)
build=${1:-build}
if ! /usr/bin/python3 -c 'import PIL, numpy' 2>/dev/null; then
  echo "needs python3-pil and python3-numpy: QVGUI_BENCH_DEPS=1 scripts/install-deps.sh" >&2
  exit 2
fi
json=$(mktemp)
trap 'rm -f "$json"' EXIT
"$build/bench/raster_dither_bench" --benchmark_filter='BM_DitherWrapper/2048$' \
  --benchmark_repetitions=5 --benchmark_out="$json" --benchmark_out_format=json >/dev/null 2>&1
/usr/bin/python3 "$here/dither_vs_pillow.py" "$json"
