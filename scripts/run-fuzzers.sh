#!/usr/bin/env bash
# Runs every libFuzzer target in BUILD_DIR/fuzz for SECONDS each, keeping a
# corpus per target under BUILD_DIR/fuzz-corpus. Exits non-zero when any
# target crashes (or is missing).
set -u

if [ $# -ne 2 ]; then
  echo "usage: $0 BUILD_DIR SECONDS" >&2
  exit 2
fi
build_dir=$1
seconds=$2
fuzz_dir="$build_dir/fuzz"
corpus_root="$build_dir/fuzz-corpus"

if [ ! -d "$fuzz_dir" ]; then
  echo "no fuzz directory in $build_dir (configure with -DQVGUI_BUILD_FUZZ=ON)" >&2
  exit 2
fi

status=0
found=0
for target in "$fuzz_dir"/*_fuzz; do
  [ -f "$target" ] && [ -x "$target" ] || continue
  found=1
  name=$(basename "$target")
  corpus="$corpus_root/$name"
  artifacts="$build_dir/fuzz-artifacts/$name/"
  mkdir -p "$corpus" "$artifacts"
  echo "== $name (${seconds}s)"
  if ! "$target" -max_total_time="$seconds" -print_final_stats=1 -artifact_prefix="$artifacts" "$corpus" \
      >"$build_dir/fuzz-$name.log" 2>&1; then
    echo "!! $name failed; see $build_dir/fuzz-$name.log and $artifacts" >&2
    tail -n 30 "$build_dir/fuzz-$name.log" >&2
    status=1
  fi
done

if [ "$found" -eq 0 ]; then
  echo "no fuzz targets found in $fuzz_dir" >&2
  exit 2
fi
exit $status
