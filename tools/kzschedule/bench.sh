#!/usr/bin/env bash
# Wall time and peak memory of kzschedule scheduling generated projects and writing their
# table: bench.sh [TOOL] [TASK COUNTS...]. Needs /usr/bin/time (Debian package "time").
set -euo pipefail
Tool=${1:-build/default/tools/kzschedule/kzschedule}
shift || true
Counts=("${@:-10000 100000 1000000}")
Work=$(mktemp -d)
trap 'rm -rf "$Work"' EXIT
for N in ${Counts[@]}; do
  "$Tool" --generate "$N" --seed 1 "$Work/project.csv"
  /usr/bin/time -f "%e %U %S %M" -o "$Work/time" "$Tool" --csv "$Work/table.csv" "$Work/project.csv" >"$Work/table.txt"
  read -r Seconds User System KiB <"$Work/time"
  printf '%9d tasks: %7.2f s wall, %7.2f s CPU, %6d MiB peak (%s)\n' "$N" "$Seconds" \
    "$(awk "BEGIN { print $User + $System }")" $((KiB / 1024)) \
    "$(grep -m1 'project duration' "$Work/table.txt")"
done
