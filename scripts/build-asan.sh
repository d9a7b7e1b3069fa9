#!/usr/bin/env bash
# Configures (once) and builds the sanitized build in build-asan/: clang with
# ASan + UBSan and no recovery, for the library, every test (the Qt editors'
# too, on the offscreen platform) and the fuzz targets, which are real
# libFuzzer binaries here. ./test.sh runs CTest in it, and scripts/fuzz.sh
# fuzzes with its targets, so one build serves both.
#   scripts/build-asan.sh [TARGET...]     (everything when no target is named)
# No optimisation and line tables only: this build compiles in about 60% of the
# time it takes at -O1, the tests lose little, and reports keep file and line.
# Asserts stay on. The benchmarks are left out: they mean nothing here.
set -euo pipefail
cd "$(dirname "$0")/.."
if [ ! -f build-asan/build.ninja ]; then
  CC=clang CXX=clang++ cmake -S . -B build-asan -G Ninja -DVLIPTC_WERROR=ON -DVLIPTC_SANITIZE=ON \
    -DVLIPTC_BUILD_BENCH=OFF -DCMAKE_BUILD_TYPE=Debug "-DCMAKE_CXX_FLAGS_DEBUG=-O0 -gline-tables-only" \
    >/dev/null
fi
cmake --build build-asan ${1+--target "$@"}
