#!/usr/bin/env bash
# Installs what is missing, then runs every test twice: in the normal build
# (gcc, build/) and in the sanitized build (clang, ASan + UBSan with no
# recovery, build-asan/), and fuzzes each target of the sanitized build for a
# few seconds (VLIPTC_FUZZ_SECONDS, default 5).
set -euo pipefail
cd "$(dirname "$0")"
scripts/bootstrap.sh
scripts/build.sh
ctest --test-dir build --output-on-failure -j2
scripts/build-asan.sh
ctest --test-dir build-asan --output-on-failure -j2 --timeout 300
scripts/fuzz.sh "${VLIPTC_FUZZ_SECONDS:-5}"
