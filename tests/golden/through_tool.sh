#!/usr/bin/env bash
# Every hand through quil-retarget against the golden record: the record's samples written as
# f64 and as npy, converted by the tool to the same format, checked by `golden check`, which
# names the hand, the block and the first differing sample.
#   through_tool.sh GOLDEN QUIL_RETARGET
set -euo pipefail
golden=$1
tool=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
"$golden" samples "$scratch" --format f64
"$golden" samples "$scratch" --format npy
failed=0
for readings in "$scratch"/*.f64 "$scratch"/*.npy; do
  hand=$(basename "${readings%.*}")
  ext=${readings##*.}
  "$tool" map --quiet -m "$hand" "$readings" -o "$scratch/$hand.targets.$ext"
  "$golden" check "$hand" "$scratch/$hand.targets.$ext" --as "quil-retarget ($ext)" || failed=1
done
[ "$failed" -eq 0 ] && echo "every hand through quil-retarget (f64 and npy) matches the golden record"
exit "$failed"
