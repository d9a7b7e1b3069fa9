#!/usr/bin/env bash
# Installs what is missing, builds, and runs the vliptc command-line tool with
# the given arguments (with none: the metadata of the images in examples/).
set -euo pipefail
cd "$(dirname "$0")"
scripts/bootstrap.sh
scripts/build.sh >/dev/null
tool=build/apps/vliptc
if [ ! -x "$tool" ]; then
  echo "run.sh: the vliptc command-line tool is not part of this build yet; the library and its tests are (./test.sh)." >&2
  exit 1
fi
if [ $# -eq 0 ]; then
  exec "$tool" show examples/*
fi
exec "$tool" "$@"
