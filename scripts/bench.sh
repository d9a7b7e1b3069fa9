#!/usr/bin/env bash
# Compares vliptc with exiv2, libexif, libiptcdata and ExifTool, and with the
# floors (the least any program pays per file), on a generated corpus.
#   scripts/bench.sh [--runs N] [--quick]
# --runs N   how many runs (default 5; 1 with --quick); each run pairs every
#            tool on each task
# --quick    the first 200 files of each list, to try the script out
#
# Builds a Release build in build-bench/ (VLIPTC_BENCH_BUILD names another
# folder), generates the corpus into ${VLIPTC_BENCH_DIR:-build-bench/corpus}
# (kept between calls), reads every file once so that the reads come from the
# page cache, and copies the files the writers change into build-bench/work/
# (fresh for each call; every run and every tool writes the same copies).
# A run starts one process per program and task, the floors first, then
# vliptc, then the peers, task after task; the library harnesses time their
# own calls, ExifTool and the vliptc tool are timed as whole processes.
# The measures go to build-bench/results-DATE.jsonl, one JSON object a line;
# scripts/bench_table.py turns them into the table printed at the end and
# saved as build-bench/results-DATE.md.
set -euo pipefail
cd "$(dirname "$0")/.."

runs=
quick=0
while [ $# -gt 0 ]; do
  case $1 in
    --runs) runs=${2:?--runs needs a number}; shift 2 ;;
    --quick) quick=1; shift ;;
    *) echo "usage: scripts/bench.sh [--runs N] [--quick]" >&2; exit 2 ;;
  esac
done
if [ -z "$runs" ]; then
  runs=$((quick == 1 ? 1 : 5))
fi

build=$(realpath -m "${VLIPTC_BENCH_BUILD:-build-bench}")
corpus=$(realpath -m "${VLIPTC_BENCH_DIR:-$build/corpus}")
work=$(realpath -m "$build/work")
stamp=$(date +%Y%m%d-%H%M%S)
results=$build/results-$stamp.jsonl
log=$build/results-$stamp.log

# --- Build ------------------------------------------------------------------
# Warnings stay warnings here: at -O3, GCC 12 sees overlapping copies inside
# std::string that are not there (-Wrestrict), and a measurement need not stop
# for them.
if [ ! -f "$build/build.ninja" ]; then
  cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release \
    -DVLIPTC_BUILD_TESTS=OFF -DVLIPTC_BUILD_FUZZERS=OFF >&2
fi
targets=(bench_make_corpus bench_floor bench_vliptc vliptc)
peers=()
known=$(ninja -C "$build" -t targets all)
for peer in exiv2 libexif libiptcdata; do
  # A peer's harness exists when CMake found its library.
  if grep -q "^bench_$peer:" <<<"$known"; then
    peers+=("$peer")
    targets+=("bench_$peer")
  else
    echo "bench: $peer is not installed; its rows are left out" >&2
  fi
done
cmake --build "$build" --target "${targets[@]}" >&2
bin=$build/bench
tool=$(realpath "$build/apps/vliptc/vliptc")
have_peer() { [[ " ${peers[*]} " == *" $1 "* ]]; }
have_exiftool=0
command -v exiftool >/dev/null && have_exiftool=1
have_time=0
[ -x /usr/bin/time ] && have_time=1

# --- Corpus, page cache, working copies ---------------------------------------
"$bin/bench_make_corpus" "$corpus"

# The lists a run uses: the full sets, or their first 200 files with --quick.
lists=$build/lists
rm -rf "$lists" "$work"
mkdir -p "$lists" "$work"
for set in jpeg jpeg-200 tiff tiff-1mb jpeg-30mb small; do
  if [ $quick -eq 1 ]; then
    head -n 200 "$corpus/$set.list" >"$lists/$set.list"
  else
    cp "$corpus/$set.list" "$lists/$set.list"
  fi
done

echo "bench: reading the corpus into the page cache" >&2
for set in jpeg tiff tiff-1mb jpeg-30mb small; do
  xargs -d '\n' cat <"$lists/$set.list" >/dev/null
done

# The writers work on copies under $work, in the corpus's layout; their lists
# are named work-SET.list.
echo "bench: copying the files to write into $work" >&2
for set in jpeg tiff tiff-1mb jpeg-30mb small; do
  sed "s|^$corpus/||" "$lists/$set.list" | (cd "$corpus" && xargs -d '\n' cp --parents -t "$work")
  sed "s|^$corpus/|$work/|" "$lists/$set.list" >"$lists/work-$set.list"
done
sync  # the copies reach the disk now, not during the first write task

# --- Measuring ----------------------------------------------------------------
run=0

# Adds the run, the task being compared and the file set to a harness's lines.
# The working copies count as the sets they copy.
tag() { sed "s/^{/{\"run\":$run,\"group\":\"$1\",\"set\":\"${2#work-}\",/" >>"$results"; }

# Page cache warmed once does not stay warm on every machine (memory managers
# that reclaim pages unused for a while, such as DAMON's, take it back within
# a minute), so every measure is taken just after a pass over the same files.
#
# harness GROUP SET PROGRAM TASK: one process of a harness over the set's list:
# a warm-up pass, then the pass that counts.
harness() {
  local list=$lists/$2.list
  "$bin/bench_$3" "$4" "$list" --passes 2 2>>"$log" | tail -n 1 | tag "$1" "$2"
}

# Reads the files of a list whole, for the processes timed from outside.
warm() { xargs -d '\n' cat <"$1" >/dev/null; }

# The files of a list and their size in bytes, taken before the process runs.
list_files() { wc -l <"$1"; }
list_bytes() { xargs -d '\n' stat -c %s <"$1" | awk '{ sum += $1 } END { printf "%.0f\n", sum }'; }

# process GROUP SET NAME TASK JOBS LIST -- COMMAND...: one whole process, timed
# from outside; its peak resident set from /usr/bin/time when there is one.
process() {
  local group=$1 set=$2 name=$3 task=$4 jobs=$5 list=$6
  shift 7
  local files bytes start end status=0 peak=0
  files=$(list_files "$list")
  bytes=$(list_bytes "$list")
  warm "$list"
  start=$(date +%s%N)
  if [ $have_time -eq 1 ]; then
    /usr/bin/time -f %M -o "$build/peak-rss" "$@" >/dev/null 2>>"$log" || status=$?
    peak=$(tail -n 1 "$build/peak-rss")
  else
    "$@" >/dev/null 2>>"$log" || status=$?
  fi
  end=$(date +%s%N)
  if [ $status -ne 0 ]; then
    echo "bench: $name $task on $set ended with status $status (see $log)" >&2
  fi
  # A process does not say how many files failed: -1 marks a non-zero exit.
  printf '{"harness":"%s","task":"%s","jobs":%d,"pass":1,"files":%d,"failures":%d,"seconds":%s,"bytes":%d,"base_rss_kb":0,"peak_rss_kb":%d,"exit_status":%d}\n' \
    "$name" "$task" "$jobs" "$files" "$([ $status -eq 0 ] && echo 0 || echo -1)" \
    "$(awk -v ns=$((end - start)) 'BEGIN { printf "%.6f", ns / 1e9 }')" "$bytes" "$peak" "$status" |
    tag "$group" "$set"
}

exiftool_keywords=()
for k in $(seq -w 1 12); do exiftool_keywords+=("-IPTC:Keywords=keyword $k"); done

exiftool_task() {  # GROUP SET TASK ARGUMENT...
  local group=$1 set=$2 task=$3
  shift 3
  [ $have_exiftool -eq 1 ] || return 0
  process "$group" "$set" exiftool "$task" 1 "$lists/$set.list" -- exiftool "$@" -@ "$lists/$set.list"
}

# The vliptc tool over the small files, from inside their folder with relative
# names, so that 20,000 of them fit on one command line.
jobs_task() {  # GROUP SET JOBS TASK vliptc-ARGUMENT... (FILES stands for the files)
  local group=$1 set=$2 jobs=$3 task=$4
  shift 4
  local folder names args=() a
  folder=$(dirname "$(head -n 1 "$lists/$set.list")")
  mapfile -t names < <(sed 's|.*/||' "$lists/$set.list")
  for a in "$@"; do
    if [ "$a" = FILES ]; then args+=("${names[@]}"); else args+=("$a"); fi
  done
  (cd "$folder" && process "$group" "$set" vliptc-tool "$task" "$jobs" "$lists/$set.list" -- \
    "$tool" --user "$work/user" --jobs "$jobs" "${args[@]}")
}

: >"$results"
python3 scripts/bench_table.py --machine "$build" >>"$results"
for run in $(seq 1 "$runs"); do
  echo "bench: run $run of $runs" >&2

  harness iptc-read jpeg floor touch-4k
  harness iptc-read jpeg floor touch-64k
  harness iptc-read jpeg vliptc iptc-read
  # Growth: the time per file on 200 files against the 2,000 (beside it, so
  # that both meet the machine alike); the TIFF writes of 1 MiB against 30 MiB
  # come from the write rows.
  harness iptc-read jpeg-200 vliptc iptc-read
  have_peer libiptcdata && harness iptc-read jpeg libiptcdata iptc-read
  have_peer exiv2 && harness iptc-read jpeg exiv2 iptc-read
  exiftool_task iptc-read jpeg iptc-read -q -fast -s -IPTC:all

  harness exif-read jpeg floor touch-64k
  harness exif-read jpeg vliptc exif-read
  have_peer libexif && harness exif-read jpeg libexif exif-read
  have_peer exiv2 && harness exif-read jpeg exiv2 exif-read
  exiftool_task exif-read jpeg exif-read -q -fast -s -EXIF:all

  harness jpeg-write work-jpeg floor copy-rename
  harness jpeg-write work-jpeg floor safe-sequence
  harness jpeg-write work-jpeg vliptc jpeg-write
  have_peer exiv2 && harness jpeg-write work-jpeg exiv2 jpeg-write
  exiftool_task jpeg-write work-jpeg jpeg-write -q -overwrite_original \
    "-IPTC:Caption-Abstract=Benchmark caption" "${exiftool_keywords[@]}"

  for set in work-tiff work-tiff-1mb; do
    harness tiff-write $set floor copy-rename
    harness tiff-write $set floor safe-sequence
    harness tiff-write $set vliptc tiff-write
    have_peer exiv2 && harness tiff-write $set exiv2 tiff-write
  done

  # Memory: the whole-file rewrite of 30 MiB JPEGs.
  harness jpeg-write-memory work-jpeg-30mb vliptc jpeg-write
  have_peer exiv2 && harness jpeg-write-memory work-jpeg-30mb exiv2 jpeg-write

  # The tool's batches. The caption differs between the two job counts, so
  # that every call changes every file (the tool leaves an unchanged file alone).
  jobs_task jobs small 1 iptc-show iptc show FILES
  jobs_task jobs small 2 iptc-show iptc show FILES
  jobs_task jobs work-small 1 iptc-set iptc set FILES --set "caption=Benchmark caption 1"
  jobs_task jobs work-small 2 iptc-set iptc set FILES --set "caption=Benchmark caption 2"
done

python3 scripts/bench_table.py "$results" | tee "$build/results-$stamp.md"
echo "bench: measures in $results, table in $build/results-$stamp.md" >&2
