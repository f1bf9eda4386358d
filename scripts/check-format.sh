#!/usr/bin/env bash
# Fails when a C++ source is not formatted as .clang-format says. With --fix,
# formats them in place instead.
set -euo pipefail
cd "$(dirname "$0")/.."
mode=(--dry-run --Werror)
[ "${1:-}" = "--fix" ] && mode=(-i)
dirs=(geometry clipping dataspace bridge surface raster lighting window text host common include tests bench fuzz
  tools examples backends plot)
existing=()
for d in "${dirs[@]}"; do [ -d "$d" ] && existing+=("$d"); done
find "${existing[@]}" -type f \( -name '*.cpp' -o -name '*.h' -o -name '*.cpp.in' \) -print0 |
  xargs -0 clang-format "${mode[@]}"
