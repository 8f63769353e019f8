#!/usr/bin/env bash
# Runs every fuzzer of a build folder for a number of seconds, side by side,
# from the committed seeds, and reports each one's executions and findings.
# Usage: fuzz/run-all.sh <build>/fuzz <seconds>
set -uo pipefail
bin=$1
seconds=$2
seeds=$(cd "$(dirname "$0")" && pwd)/corpus
export QT_QPA_PLATFORM=offscreen ASAN_OPTIONS=detect_leaks=0:quarantine_size_mb=64
# OpenImageIO's plugins alone take half a gigabyte; one allocation above 2 GB
# is still a finding.
limits="-rss_limit_mb=4096 -malloc_limit_mb=2048"

pids=()
names=()
for fuzzer in "$bin"/fuzz_*; do
  [ -f "$fuzzer" ] && [ -x "$fuzzer" ] || continue
  name=$(basename "$fuzzer")
  mkdir -p "$bin/learned/$name"
  "$fuzzer" -max_total_time="$seconds" -print_final_stats=1 $limits -artifact_prefix="$bin/$name-" \
    "$bin/learned/$name" "$seeds/$name" > "$bin/$name.log" 2>&1 &
  pids+=($!)
  names+=("$name")
done

failed=0
for i in "${!pids[@]}"; do
  if wait "${pids[$i]}"; then verdict="no finding"; else verdict="FINDING, see $bin/${names[$i]}.log"; failed=1; fi
  runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$bin/${names[$i]}.log")
  printf '%-22s %12s executions in %ss  %s\n' "${names[$i]}" "${runs:-?}" "$seconds" "$verdict"
done
exit $failed
