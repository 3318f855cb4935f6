#!/bin/sh
# check_layouts.sh PYTHON: each sample layout is what its script writes.
folder=$(dirname "$0")
failed=0
for script in "$folder"/make_*.py; do
  layout=${script#"$folder"/make_}
  PYTHONDONTWRITEBYTECODE=1 "$1" "$script" | cmp - "$folder/${layout%.py}.zblt" || failed=1
done
exit $failed
