#!/bin/bash
# A short search with every target, the same every time: short_run.sh BUILD-FOLDER
set -euo pipefail
here=$(dirname "$0")
build=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
targets=$(VARNOK_FUZZ=none "$build/tests/fuzz/fuzz" 2>&1 | sed 1d || :)
for target in $targets; do
  "$here/make_seeds.sh" "$build" "$target" "$work/$target"
  VARNOK_FUZZ=$target "$build/tests/fuzz/fuzz" -seed=1 -runs=150 -max_len=6000 -timeout=60 -close_fd_mask=3 \
    -dict="$work/$target.dict" -artifact_prefix="$work/" "$work/$target" >"$work/log" 2>&1 || {
    echo "$target:"
    cat "$work/log"
    for input in "$work"/crash-* "$work"/timeout-* "$work"/leak-* "$work"/oom-*; do
      [ ! -f "$input" ] || { echo "input:"; base64 "$input"; }
    done
    exit 1
  }
  echo "$target: $(grep -E '^#[0-9]+.DONE' "$work/log")"
done
