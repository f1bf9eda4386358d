#!/bin/sh
# Runs the triangle-fill benchmark of this library and Pillow's flat polygon
# fill on the same triangles and prints the ratio of filled pixels per second.
# Needs Debian's python3-pil.
# Usage: bench/fill_vs_pillow.sh [build-dir]   (a Release build with benchmarks)
set -eu
here=$(cd "$(dirname "$0")" && pwd)
build=${1:-build}
json=$(mktemp)
trap 'rm -f "$json"' EXIT
"$build/bench/raster_fill_bench" --benchmark_repetitions=5 \
  --benchmark_out="$json" --benchmark_out_format=json >/dev/null 2>&1
/usr/bin/python3 "$here/fill_vs_pillow.py" "$json"
