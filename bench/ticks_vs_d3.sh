#!/usr/bin/env bash
# Compares calculateLinearTicks (searching 2..11 ticks) with d3-array's
# ticks(lo, hi, 10) on the same 100,000 fixed-seed ranges, in calls per second
# of processor time on both sides.
#
#   bench/ticks_vs_d3.sh [build-dir]     (default: build; needs dataspace_ticks_bench built)
#
# d3-array is installed with npm into a cache outside the repository. The
# ranges are written once into that cache, and both sides read the same file.
set -euo pipefail

build_dir=${1:-build}
bench=$build_dir/bench/dataspace_ticks_bench
if [[ ! -x $bench ]]; then
  echo "missing $bench: configure with -DQVGUI_BUILD_BENCH=ON and build dataspace_ticks_bench" >&2
  exit 1
fi
bench=$(cd "$(dirname "$bench")" && pwd)/$(basename "$bench")

cache=${XDG_CACHE_HOME:-$HOME/.cache}/qvgui-bench
mkdir -p "$cache"
if [[ ! -d $cache/node_modules/d3-array ]]; then
  (cd "$cache" && npm install --no-audit --no-fund --silent d3-array@3 >/dev/null)
fi

ranges=$cache/tick_ranges.txt
if [[ ! -s $ranges ]]; then
  node - "$ranges" <<'EOF'
// Fixed-seed ranges over thirteen decades of scale, both signs.
const fs = require("fs");
let s = 20261121 >>> 0;
const rand = () => {  // mulberry32
  s = (s + 0x6d2b79f5) >>> 0;
  let t = s;
  t = Math.imul(t ^ (t >>> 15), t | 1);
  t ^= t + Math.imul(t ^ (t >>> 7), t | 61);
  return ((t ^ (t >>> 14)) >>> 0) / 4294967296;
};
const lines = [];
for (let i = 0; i < 100000; ++i) {
  const scale = Math.pow(10, Math.floor(rand() * 13) - 6);
  const lo = (rand() * 2 - 1) * scale;
  const hi = lo + rand() * scale + 1e-3 * scale;
  lines.push(lo.toPrecision(17) + " " + hi.toPrecision(17));
}
fs.writeFileSync(process.argv[2], lines.join("\n") + "\n");
EOF
fi

cat >"$cache/d3_ticks_rate.mjs" <<'EOF'
import { readFileSync } from "fs";
import { ticks } from "d3-array";
const pairs = readFileSync(process.argv[2], "utf8").trim().split("\n").map((l) => l.split(" ").map(Number));
let sink = 0;
const pass = () => {
  for (const [lo, hi] of pairs) sink += ticks(lo, hi, 10).length;
};
pass();  // warm-up
const start = process.cpuUsage();
let calls = 0;
let used = 0;
do {
  pass();
  calls += pairs.length;
  const u = process.cpuUsage(start);
  used = (u.user + u.system) / 1e6;
} while (used < 2);
console.log(JSON.stringify({ rate: calls / used, sink }));
EOF

d3_rate=$(cd "$cache" && node d3_ticks_rate.mjs "$ranges" | node -e 'let s="";process.stdin.on("data",d=>s+=d).on("end",()=>console.log(JSON.parse(s).rate))')
cpp_rate=$(QVGUI_TICK_RANGES=$ranges "$bench" --benchmark_filter='BM_CalculateLinearTicks/enclosing' \
  --benchmark_min_time=2 --benchmark_format=json 2>/dev/null |
  node -e 'let s="";process.stdin.on("data",d=>s+=d).on("end",()=>console.log(JSON.parse(s).benchmarks[0].items_per_second))')

node -e '
const [d3, cpp] = process.argv.slice(1).map(Number);
const f = (x) => (x / 1e6).toFixed(2) + " M calls/s";
console.log("d3-array ticks(lo, hi, 10):            " + f(d3));
console.log("calculateLinearTicks(2..11, enclosing): " + f(cpp));
console.log("ratio (qvgui / d3):                     " + (cpp / d3).toFixed(2));
' "$d3_rate" "$cpp_rate"
