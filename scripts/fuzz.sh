#!/usr/bin/env bash
# Builds the libFuzzer targets with clang (ASan + UBSan) in build-fuzz/ and runs
# each for SECONDS seconds on a working copy of its seeds. Exits non-zero when a
# target finds a crash, a hang or runaway memory; the input is left in
# build-fuzz/findings/<target>/.
#   scripts/fuzz.sh SECONDS [TARGET...]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}
shift || true

if [ ! -f build-fuzz/build.ninja ]; then
  CC=clang CXX=clang++ cmake -S . -B build-fuzz -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DVLIPTC_LIBFUZZER=ON -DVLIPTC_BUILD_TESTS=OFF -DVLIPTC_BUILD_BENCH=OFF >/dev/null
fi
cmake --build build-fuzz >/dev/null

targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  mapfile -t targets < <(sed -n 's/^vliptc_add_fuzzer(\([a-z0-9_]*\) .*/\1/p' fuzz/CMakeLists.txt)
fi

status=0
for t in "${targets[@]}"; do
  work=build-fuzz/corpus/$t
  findings=build-fuzz/findings/$t
  mkdir -p "$work" "$findings"
  cp -n fuzz/corpus/"$t"/* "$work"/ 2>/dev/null || true
  dict=()
  [ -f fuzz/dict/"$t".dict ] && dict=(-dict=fuzz/dict/"$t".dict)
  if build-fuzz/fuzz/"$t" "$work" "${dict[@]}" -max_total_time="$seconds" -timeout=10 \
       -rss_limit_mb=2048 -max_len=1048576 -artifact_prefix="$findings/" -print_final_stats=1 \
       >build-fuzz/"$t".log 2>&1; then
    echo "fuzz: $t: $(grep -m1 -o 'stat::number_of_executed_units: *[0-9]*' build-fuzz/"$t".log | grep -o '[0-9]*$') runs in ${seconds}s, no findings"
  else
    echo "fuzz: $t: FINDING (see build-fuzz/$t.log and $findings)"
    tail -n 30 build-fuzz/"$t".log
    status=1
  fi
done
exit $status
