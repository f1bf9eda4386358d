#!/usr/bin/env bash
# Fails when libqvgui imports a symbol of the host runtime that the platform
# interface (include/qvgui/host.h) does not declare: a host that implements
# only that header must be able to load the library.
# Usage: check-host-imports.sh <libqvgui> <libqvhost> <host.h>
set -euo pipefail
library=$1 runtime=$2 header=$3

# Names the header declares: every identifier outside comments.
declared=$(sed 's|//.*||' "$header" | grep -oE '[A-Za-z_][A-Za-z_0-9]*' | sort -u)

nm -D --defined-only "$runtime" | awk '{print $3}' | sort -u >"${TMPDIR:-/tmp}/qvhost-exports.$$"
imports=$(nm -D --undefined-only "$library" | awk '{print $2}' | sort -u |
  comm -12 - "${TMPDIR:-/tmp}/qvhost-exports.$$")
rm -f "${TMPDIR:-/tmp}/qvhost-exports.$$"
if [ -z "$imports" ]; then
  echo "no imports from $runtime found in $library" >&2
  exit 1
fi

missing=0
while IFS= read -r symbol; do
  readable=$(printf '%s\n' "$symbol" | c++filt)
  # The function or class the symbol belongs to: "typeinfo for X", "X::f(...)"
  # and "f(...)" all name their first identifier.
  name=$(printf '%s\n' "$readable" | sed -E 's/^(typeinfo name for|typeinfo for|vtable for|VTT for) //' |
    grep -oE '^[A-Za-z_][A-Za-z_0-9]*')
  if ! grep -qxF "$name" <<<"$declared"; then
    echo "libqvgui uses $readable, which $header does not declare" >&2
    missing=1
  fi
done <<<"$imports"
exit $missing
