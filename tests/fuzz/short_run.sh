#!/bin/sh
# A short run of a fuzzer from the seeds, the same every time: short_run.sh PROGRAM SAMPLES
set -eu
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
"$(dirname "$0")/make_seeds.sh" "$work/seeds" "$2"
"$1" -seed=1 -runs=3000 -max_len=6000 -timeout=60 -artifact_prefix="$work/" "$work/seeds" >"$work/log" 2>&1 || {
  cat "$work/log"
  for input in "$work"/crash-* "$work"/timeout-* "$work"/leak-*; do
    [ ! -f "$input" ] || { echo "input:"; base64 "$input"; }
  done
  exit 1
}
tail -n 1 "$work/log"
