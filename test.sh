#!/usr/bin/env bash
# Installs what is missing, builds, runs every test, then fuzzes each target
# for a few seconds.
set -euo pipefail
cd "$(dirname "$0")"
scripts/bootstrap.sh
scripts/build.sh
ctest --test-dir build --output-on-failure -j2
scripts/fuzz.sh "${VLIPTC_FUZZ_SECONDS:-5}"
