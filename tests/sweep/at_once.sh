#!/bin/bash
# Runs the sweeps whose faults make callers wait, side by side: they do nothing else for most of the
# time, and one after the other they would take many minutes.
#   at_once.sh PROGRAM FILTER COUNT
set -u
program=$1 filter=$2 count=$3
folder=$(mktemp -d)
declare -A running=()
# When a signal ends it, none of them is left behind.
trap 'kill "${running[@]}" 2> /dev/null; rm -rf "$folder"' EXIT
trap 'exit 1' INT TERM

for ((i = 0; i < count; ++i)); do
  "$program" --gtest_filter="$filter/$i" > "$folder/$i" 2>&1 &
  running[$i]=$!
done
status=0
for i in "${!running[@]}"; do
  if ! wait "${running[$i]}"; then
    cat "$folder/$i"
    status=1
  elif ! grep -q '^\[  PASSED  \] 1 test' "$folder/$i"; then
    echo "there is no test $filter/$i"
    status=1
  else
    grep '^swept ' "$folder/$i"
  fi
  unset "running[$i]"
done
exit "$status"
