#!/usr/bin/env bash
# Installs what is missing, then runs every test twice: in the normal build
# (gcc, build/) and in the sanitized build (clang, ASan + UBSan with no
# recovery, build-asan/), and fuzzes each target of the sanitized build for a
# few seconds (VLIPTC_FUZZ_SECONDS, default 5) from a fixed seed
# (VLIPTC_FUZZ_SEED, default 1), so that the run repeats; longer campaigns with
# fresh seeds are scripts/fuzz.sh's.
set -euo pipefail
cd "$(dirname "$0")"
scripts/bootstrap.sh
scripts/build.sh
ctest --test-dir build --output-on-failure -j2
scripts/build-asan.sh
ctest --test-dir build-asan --output-on-failure -j2 --timeout 300
VLIPTC_FUZZ_SEED=${VLIPTC_FUZZ_SEED:-1} scripts/fuzz.sh "${VLIPTC_FUZZ_SECONDS:-5}"
