#!/usr/bin/env bash
# Installs every Debian package that the build, the tests, the fuzzers and the
# benchmarks need. Runs apt-get only when something is missing.
set -euo pipefail

packages=(
  cmake ninja-build g++ pkg-config
  clang libclang-rt-14-dev            # libFuzzer and the sanitizers
  googletest libgtest-dev libgmock-dev
  libbenchmark-dev
  libexiv2-dev libiptcdata0-dev       # the peers the comparison benchmarks measure (bench/harness/)
  python3                             # scripts/bench.sh's table
  nlohmann-json3-dev                  # JSON of the corpus oracle and of exiftool in the container tests
  libimage-exiftool-perl exiv2        # interop: files we write are read back by both
  libjpeg-turbo-progs                 # djpeg: decoded pixels stay identical after a write
  libcli11-dev                        # argument parsing of the vliptc tool
  libexif-dev                         # the imaging stand-in builds EXIF data with it
  imagemagick                         # scripts/make-examples.sh draws the sample images
  qt6-base-dev                        # the editors (Qt 6 Widgets, QtTest; the offscreen platform for UI tests)
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "bootstrap: installing ${missing[*]}"
sudo=""
if [ "$(id -u)" -ne 0 ]; then sudo="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update
$sudo apt-get install -y --no-install-recommends "${missing[@]}"
