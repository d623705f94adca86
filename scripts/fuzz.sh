#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# usage: scripts/fuzz.sh SECONDS [WHAT]...
#
# Runs the fuzzers of build/fuzz (all of them, or fuzz_WHAT), as many at a time as there are processors, for so many
# seconds of processor time each: three quarters on inputs of up to 4 KiB, of which it can try many, and the rest on inputs
# of up to 1 MiB, where what takes the square of the time shows. They start from tests/fuzz/corpus and keep what they find
# beside the build, for the next run. What breaks is written to build/fuzz/broken, and the run fails; it goes into tests/fuzz/corpus once it is
# mended.
set -euo pipefail
# shellcheck source=scripts/common.sh
source "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/common.sh"

readonly build=$root/build/fuzz broken=$root/build/fuzz/broken

# fuzz WHAT SECONDS: runs one fuzzer. libFuzzer counts the time by the clock, of which other programs may take a part;
# it is started again until it has had the processor for long enough.
fuzz() {
  local what=$1 left=$2 log=$build/fuzz_$1.log used=0 runs=0 part longest slowest
  mkdir -p "$build/corpus/$what" "$broken"
  while ((left > 0)); do
    # The long inputs come last: what is found among the short ones is where they begin.
    longest=4096 slowest=10 part=$(($2 * 3 / 4 - used))
    if ((part <= 0)); then longest=$((1 << 20)) slowest=60 part=$left; fi
    # The longest input decides how slow the slowest one is; a hang is what takes a hundred times as long as that.
    if ! { TIMEFORMAT='%U %S' && time "$build/bin/fuzz_$what" -max_total_time="$part" -max_len="$longest" \
      -timeout="$slowest" -rss_limit_mb=2048 -print_final_stats=1 -verbosity=0 -dict="$root/tests/fuzz/dictionaries/$what" \
      -artifact_prefix="$broken/$what-" "$build/corpus/$what" "$root/tests/fuzz/corpus/$what" >"$log" 2>&1; } \
      2>"$log.time"; then
      tail -n 60 "$log"
      say "fuzz_$what: found what breaks; its input is in $broken"
      return 1
    fi
    runs=$((runs + $(sed -n 's/^stat::number_of_executed_units: *//p' "$log")))
    part=$(awk '{ print int($1 + $2 + 0.5) }' "$log.time")
    # A fuzzer that ends at once would be started for ever.
    used=$((used + (part > 0 ? part : 1)))
    left=$(($2 - used))
  done
  say "fuzz_$what: $runs inputs in $used seconds of processor time, nothing broke"
}

main() {
  local seconds=${1:-} fuzzer status=0
  if [[ ! $seconds =~ ^[1-9][0-9]*$ ]]; then fail "usage: scripts/fuzz.sh SECONDS [WHAT]..."; fi
  shift
  if (($# == 0)); then
    for fuzzer in "$root"/tests/fuzz/fuzz_*.cpp; do set -- "$@" "$(basename "$fuzzer" .cpp | sed 's/^fuzz_//')"; done
  fi
  for fuzzer in "$@"; do
    if (($(jobs -rp | wc -l) >= $(nproc))); then wait -n || status=1; fi
    fuzz "$fuzzer" "$seconds" &
  done
  while (($(jobs -p | wc -l) > 0)); do wait -n || status=1; done
  return "$status"
}

if [[ ${BASH_SOURCE[0]} == "$0" ]]; then main "$@"; fi
