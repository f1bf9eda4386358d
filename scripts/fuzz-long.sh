#!/usr/bin/env bash
# The long fuzzing run behind the figures in the README's reliability section:
# every libFuzzer target (or the ones named), one at a time, for RUNS
# executions each (10^7 unless given), keeping and growing the corpus that
# scripts/run-fuzzers.sh uses. Builds the fuzz configuration of
# scripts/test.sh in BUILD_DIR first when it is not there. Prints one line per
# target with its executions, time and outcome; exits non-zero when any
# target finds a crash, a leak, undefined behaviour or a timeout.
#
#   scripts/fuzz-long.sh [BUILD_DIR [RUNS [TARGET...]]]
#   QVGUI_FUZZ_TIMEOUT (seconds per input, default 25) bounds each input;
#   QVGUI_FUZZ_MAX_SECONDS, when set, also ends each target after that many
#   seconds (the line then shows the executions actually reached).
set -u
cd "$(dirname "$0")/.."

build_dir=${1:-build/fuzz}
runs=${2:-10000000}
shift $(($# > 2 ? 2 : $#))
timeout_per_input=${QVGUI_FUZZ_TIMEOUT:-25}
time_limit=()
[ -n "${QVGUI_FUZZ_MAX_SECONDS:-}" ] && time_limit=(-max_total_time="$QVGUI_FUZZ_MAX_SECONDS")

if [ ! -d "$build_dir/fuzz" ]; then
  cmake -S . -B "$build_dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER=clang++ \
    -DQVGUI_BUILD_FUZZ=ON -DQVGUI_BUILD_TESTS=OFF -DQVGUI_BUILD_BENCH=OFF -DQVGUI_BUILD_TOOLS=OFF \
    -DQVGUI_SANITIZE=ON || exit 2
fi
cmake --build "$build_dir" -j"$(nproc)" || exit 2

targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  for t in "$build_dir"/fuzz/*_fuzz; do
    [ -x "$t" ] && targets+=("$(basename "$t")")
  done
fi

log_dir="$build_dir/fuzz-long"
mkdir -p "$log_dir"
status=0
printf '%-24s %14s %9s  %s\n' target executions seconds outcome
for name in "${targets[@]}"; do
  target="$build_dir/fuzz/$name"
  corpus="$build_dir/fuzz-corpus/$name"
  artifacts="$build_dir/fuzz-artifacts/$name/"
  mkdir -p "$corpus" "$artifacts"
  start=$(date +%s)
  ASAN_OPTIONS=detect_leaks=1 "$target" -runs="$runs" "${time_limit[@]}" -timeout="$timeout_per_input" -print_final_stats=1 \
    -artifact_prefix="$artifacts" "$corpus" >"$log_dir/$name.log" 2>&1
  rc=$?
  seconds=$(($(date +%s) - start))
  executions=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log_dir/$name.log" | tail -n 1)
  outcome="no finding"
  if [ $rc -ne 0 ]; then
    outcome="FINDING (exit $rc; see $log_dir/$name.log and $artifacts)"
    status=1
  fi
  printf '%-24s %14s %9s  %s\n' "$name" "${executions:-?}" "$seconds" "$outcome"
done
exit $status
