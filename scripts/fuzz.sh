#!/usr/bin/env bash
# Runs each libFuzzer target for SECONDS seconds on a working copy of its seeds.
# The targets are those of the sanitized build (build-asan/, clang, ASan + UBSan;
# see scripts/build-asan.sh), which ./test.sh has built and tested already;
# called alone, this builds just the targets and the libraries they link.
# Exits non-zero when a target finds a crash, a hang or runaway memory; the
# input is left in build-asan/fuzzing/findings/<target>/.
#   scripts/fuzz.sh SECONDS [TARGET...]
# Each run draws a new seed for the mutations, unless VLIPTC_FUZZ_SEED fixes
# one (./test.sh does, so that its short run repeats from machine to machine).
# (A lean fuzz-only build without Qt and the tests is still there for fuzzing by
# hand: cmake -DVLIPTC_LIBFUZZER=ON with clang, in a folder of your own.)
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}
shift || true

targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  mapfile -t targets < <(sed -n 's/^vliptc_add_fuzzer(\([a-z0-9_]*\) .*/\1/p' fuzz/CMakeLists.txt)
fi
scripts/build-asan.sh "${targets[@]}" >/dev/null

out=build-asan/fuzzing
status=0
for t in "${targets[@]}"; do
  work=$out/corpus/$t
  findings=$out/findings/$t
  log=$out/$t.log
  mkdir -p "$work" "$findings"
  cp -n fuzz/corpus/"$t"/* "$work"/ 2>/dev/null || true
  seed=()
  [ -n "${VLIPTC_FUZZ_SEED:-}" ] && seed=(-seed="$VLIPTC_FUZZ_SEED")
  dict=()
  [ -f fuzz/dict/"$t".dict ] && dict=(-dict=fuzz/dict/"$t".dict)
  if UBSAN_OPTIONS=print_stacktrace=1 build-asan/fuzz/"$t" "$work" "${dict[@]}" "${seed[@]}" \
       -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -max_len=1048576 \
       -artifact_prefix="$findings/" -print_final_stats=1 >"$log" 2>&1; then
    echo "fuzz: $t: $(grep -m1 -o 'stat::number_of_executed_units: *[0-9]*' "$log" | grep -o '[0-9]*$') runs in ${seconds}s, no findings"
  else
    echo "fuzz: $t: FINDING (see $log and $findings)"
    tail -n 30 "$log"
    status=1
  fi
done
exit $status
