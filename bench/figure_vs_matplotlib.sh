#!/bin/sh
# Renders the sample filled-contour and lit-surface figures at 1600x1200 to
# PNG with this library and with matplotlib's Agg back end, and prints both
# processor times per figure and their ratio.
# Usage: bench/figure_vs_matplotlib.sh [build-dir]   (a Release build with benchmarks)
set -eu
here=$(cd "$(dirname "$0")" && pwd)
build=${1:-build}
json=$(mktemp)
trap 'rm -f "$json"' EXIT
"$build/plot/plot_figure_bench" --benchmark_repetitions=5 --benchmark_out="$json" \
  --benchmark_out_format=json >/dev/null 2>&1
/usr/bin/python3 "$here/figure_vs_matplotlib.py" "$json"
