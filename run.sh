#!/usr/bin/env bash
# Installs what is missing, builds, and runs the vliptc command-line tool with
# the given arguments (with none: the IPTC fields of the images in examples/).
set -euo pipefail
cd "$(dirname "$0")"
scripts/bootstrap.sh
scripts/build.sh >/dev/null
tool=build/apps/vliptc/vliptc
if [ ! -x "$tool" ]; then
  echo "run.sh: $tool was not built (is VLIPTC_BUILD_CLI off in build/?)" >&2
  exit 1
fi
if [ $# -eq 0 ]; then
  exec "$tool" iptc show examples/*
fi
exec "$tool" "$@"
