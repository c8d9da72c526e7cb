#!/bin/sh
# Runs the cases of a test program that only waits in several processes at once, and prints what each of them said.
#   tests/side_by_side.sh PROCESSES PROGRAM
# Fails where one of them fails, or has no case.
set -u
processes=$1
program=$2
logs=$(mktemp -d)
trap 'rm -rf "$logs"' EXIT
index=0
while [ "$index" -lt "$processes" ]; do
  (
    GTEST_TOTAL_SHARDS=$processes GTEST_SHARD_INDEX=$index "$program" >"$logs/$index" 2>&1
    echo $? >"$logs/$index.result"
  ) &
  index=$((index + 1))
done
wait
result=0
index=0
while [ "$index" -lt "$processes" ]; do
  cat "$logs/$index"
  [ "$(cat "$logs/$index.result")" = 0 ] && grep -q '^\[==========\] [1-9][0-9]* test.* ran\.' "$logs/$index" || result=1
  index=$((index + 1))
done
exit "$result"
