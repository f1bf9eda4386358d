#!/bin/sh
# Runs the contour benchmark of this library and contourpy's serial generator
# on the same surface and prints the ratio of output points per second.
# Usage: bench/contour_vs_contourpy.sh [build-dir]   (a Release build with benchmarks)
set -eu
here=$(cd "$(dirname "$0")" && pwd)
build=${1:-build}
json=$(mktemp)
trap 'rm -f "$json"' EXIT
"$build/bench/surface_contour_bench" --benchmark_filter='BM_ContourTrace' \
  --benchmark_repetitions=5 --benchmark_out="$json" --benchmark_out_format=json >/dev/null 2>&1
/usr/bin/python3 "$here/contour_vs_contourpy.py" "$json"
