#!/usr/bin/env python3
"""The table of a scripts/bench.sh call.

  bench_table.py RESULTS.jsonl     prints the machine, the versions and one
                                   markdown table of the measures
  bench_table.py --machine BUILD   prints the JSON line that describes this
                                   machine and the versions measured (bench.sh
                                   puts it first in the results)

Every ratio is a quotient of two times of the same run, and the median of
those quotients over the runs: the tools of a run are measured one after the
other, so that a busy moment of the machine weighs on all of them alike.
"""

import json
import os
import platform
import statistics
import subprocess
import sys
from collections import defaultdict

PEER_LIBRARIES = ("exiv2", "libexif", "libiptcdata")

# The comparisons in the order of the table: (group, set, title).
COMPARISONS = (
    ("iptc-read", "jpeg", "IPTC read"),
    ("exif-read", "jpeg", "EXIF read, text of every field"),
    ("jpeg-write", "jpeg", "JPEG IPTC write"),
    ("tiff-write", "tiff", "TIFF IPTC write, 30 MiB"),
    ("tiff-write", "tiff-1mb", "TIFF IPTC write, 1 MiB"),
    ("jpeg-write-memory", "jpeg-30mb", "memory: JPEG IPTC write, 30 MiB"),
    ("jobs", "small", "vliptc tool batches"),
)
# Within a comparison: floors, then ours, then the peers, then the processes.
TOOL_ORDER = ("floor", "vliptc", "libiptcdata", "libexif", "exiv2", "exiftool", "vliptc-tool")
TASK_ORDER = ("touch-4k", "touch-64k", "copy-rename", "safe-sequence", "iptc-show", "iptc-set")

HEADER = ("task", "files", "tool", "µs/file median", "min", "max", "MB/s", "peak RSS MiB",
          "ratios (÷ X: this time over X's, median of the runs)", "failures")


def command_output(*command):
    try:
        return subprocess.run(command, capture_output=True, text=True, check=True).stdout.strip()
    except (OSError, subprocess.CalledProcessError):
        return ""


def machine(build):
    cpu = ""
    with open("/proc/cpuinfo", encoding="utf-8") as cpuinfo:
        for line in cpuinfo:
            if line.startswith("model name"):
                cpu = line.split(":", 1)[1].strip()
                break
    ram_kb = 0
    with open("/proc/meminfo", encoding="utf-8") as meminfo:
        for line in meminfo:
            if line.startswith("MemTotal:"):
                ram_kb = int(line.split()[1])
    compiler = ""
    cache = os.path.join(build, "CMakeCache.txt")
    if os.path.exists(cache):
        with open(cache, encoding="utf-8") as lines:
            for line in lines:
                if line.startswith("CMAKE_CXX_COMPILER:"):
                    compiler = command_output(line.split("=", 1)[1].strip(), "--version").splitlines()[0]
    versions = {name: command_output("pkg-config", "--modversion", name) for name in PEER_LIBRARIES}
    versions["exiftool"] = command_output("exiftool", "-ver")
    return {"cpu": cpu, "cores": os.cpu_count(), "ram_gib": round(ram_kb / 1048576, 1),
            "kernel": platform.system() + " " + platform.release(), "versions": versions,
            "compiler": compiler}


def read_results(path):
    info = {}
    by_row = defaultdict(lambda: defaultdict(list))  # row key -> run -> records
    with open(path, encoding="utf-8") as lines:
        for line in lines:
            if not line.strip():
                continue
            record = json.loads(line)
            if "machine" in record:
                info = record["machine"]
                continue
            by_row[row_key(record)][record["run"]].append(record)
    return info, by_row


def row_key(record):
    return (record["group"], record["set"], record["harness"], record["task"], record.get("jobs", 0))


def tool_name(key):
    harness, task, jobs = key[2], key[3], key[4]
    if harness == "floor":
        return "floor " + task
    if harness == "vliptc-tool":
        return f"vliptc --jobs {jobs}"
    return harness


def per_run(runs, measure):
    """The measure of each run: the median over the passes of that run."""
    return {run: statistics.median(measure(r) for r in records) for run, records in runs.items()}


def microseconds_per_file(record):
    return record["seconds"] / max(record["files"], 1) * 1e6


def megabytes_per_second(record):
    return record["bytes"] / 1e6 / record["seconds"] if record["seconds"] > 0 else 0.0


def median_ratio(numerator, denominator):
    """The median over the runs both have of numerator / denominator."""
    quotients = [numerator[run] / denominator[run] for run in numerator
                 if run in denominator and denominator[run] > 0]
    return statistics.median(quotients) if quotients else None


def number(value):
    if value is None:
        return ""
    if value >= 100:
        return f"{value:.0f}"
    if value >= 10:
        return f"{value:.1f}"
    return f"{value:.2f}"


def ratio(value):
    return "" if value is None else f"{value:.2f}"


def order(names, name):
    return names.index(name) if name in names else len(names)


def sort_key(key):
    return (order(TOOL_ORDER, key[2]), order(TASK_ORDER, key[3]), key[4])


def failures(runs):
    counts = [r["failures"] for records in runs.values() for r in records]
    if any(count < 0 for count in counts):
        return "exit status ≠ 0"
    return str(sum(counts))


def rss_text(key, runs, mb_per_file):
    peak = max(r["peak_rss_kb"] for records in runs.values() for r in records) / 1024
    if key[0] != "jpeg-write-memory":
        return number(peak) if peak > 0 else ""
    growth = max((r["peak_rss_kb"] - r["base_rss_kb"]) for records in runs.values() for r in records) / 1024
    multiple = growth * 1048576 / 1e6 / mb_per_file if mb_per_file else 0
    return f"{number(peak)} (+{number(growth)} MiB, {multiple:.2f}× the file)"


def comparison_rows(title, keys, by_row):
    times = {key: per_run(by_row[key], microseconds_per_file) for key in keys}
    floors = [key for key in keys if key[2] == "floor"]
    ours = next((key for key in keys if key[2] == "vliptc"), None)
    rows = []
    for key in keys:
        runs = by_row[key]
        per_file = list(times[key].values())
        any_record = next(iter(runs.values()))[0]
        mb_per_file = any_record["bytes"] / 1e6 / max(any_record["files"], 1)
        writes = "write" in key[0] or key[3] == "iptc-set"
        speed = statistics.median(per_run(runs, megabytes_per_second).values()) if writes else None
        ratios = []
        if key[2] != "floor":
            for floor in floors:
                ratios.append(f"÷ {floor[3]} {ratio(median_ratio(times[key], times[floor]))}")
        if ours and key[2] in PEER_LIBRARIES + ("exiftool",):
            ratios.append(f"÷ vliptc {ratio(median_ratio(times[key], times[ours]))}")
        if key[2] == "vliptc-tool" and key[4] > 1:
            single = next((k for k in keys if k[2] == key[2] and k[3] == key[3] and k[4] == 1), None)
            if single:
                speed_up = ratio(median_ratio(times[single], times[key]))
                ratios.append(f"speed-up {speed_up} (jobs 1 ÷ jobs {key[4]})")
        task = title if key[2] != "vliptc-tool" else f"{title}: {key[3].replace('-', ' ')}"
        rows.append((task, str(any_record["files"]), tool_name(key), number(statistics.median(per_file)),
                     number(min(per_file)), number(max(per_file)), number(speed),
                     rss_text(key, runs, mb_per_file), "; ".join(ratios), failures(runs)))
    return rows


def set_size(runs):
    """The files of a set, and their mean size when that is what grows."""
    record = next(iter(runs.values()))[0]
    if record["group"] == "iptc-read":
        return str(record["files"])
    return f"{record['files']} × {number(record['bytes'] / max(record['files'], 1) / 1048576)} MiB"


def growth_row(title, small_key, large_key, by_row, with_speed):
    """vliptc on a small set against a large one: the per-file time (and MB/s)."""
    if small_key not in by_row or large_key not in by_row:
        return None
    small, large = by_row[small_key], by_row[large_key]
    small_time, large_time = per_run(small, microseconds_per_file), per_run(large, microseconds_per_file)
    files = f"{set_size(small)} → {set_size(large)}"
    per_file = (f"{number(statistics.median(small_time.values()))} → "
                f"{number(statistics.median(large_time.values()))}")
    ratios = [f"per file: {large_key[1]} ÷ {small_key[1]} {ratio(median_ratio(large_time, small_time))}"]
    speed = ""
    if with_speed:
        small_speed, large_speed = per_run(small, megabytes_per_second), per_run(large, megabytes_per_second)
        speed = (f"{number(statistics.median(small_speed.values()))} → "
                 f"{number(statistics.median(large_speed.values()))}")
        speed_growth = ratio(median_ratio(large_speed, small_speed))
        ratios.append(f"MB/s: {large_key[1]} ÷ {small_key[1]} {speed_growth}")
    return (title, files, "vliptc", per_file, "", "", speed, "", "; ".join(ratios), "")


def table_rows(by_row):
    rows = []
    for group, file_set, title in COMPARISONS:
        keys = sorted((key for key in by_row if key[0] == group and key[1] == file_set), key=sort_key)
        if keys:
            rows.extend(comparison_rows(title, keys, by_row))
    growth = (
        growth_row("growth: IPTC read", ("iptc-read", "jpeg-200", "vliptc", "iptc-read", 0),
                   ("iptc-read", "jpeg", "vliptc", "iptc-read", 0), by_row, False),
        growth_row("growth: TIFF IPTC write", ("tiff-write", "tiff-1mb", "vliptc", "tiff-write", 0),
                   ("tiff-write", "tiff", "vliptc", "tiff-write", 0), by_row, True),
    )
    rows.extend(row for row in growth if row)
    return rows


def markdown_row(cells):
    return "| " + " | ".join(cell.replace("|", "\\|") for cell in cells) + " |"


def print_table(path):
    info, by_row = read_results(path)
    if info:
        versions = info.get("versions", {})
        print(f"Machine: {info.get('cpu')}, {info.get('cores')} cores, {info.get('ram_gib')} GiB RAM, "
              f"{info.get('kernel')}  ")
        print("Versions: " + ", ".join(f"{name} {versions.get(name) or 'absent'}"
                                       for name in PEER_LIBRARIES + ("exiftool",))
              + f"; compiler {info.get('compiler')}  ")
    runs = {run for row in by_row.values() for run in row}
    print(f"Runs: {len(runs)}")
    print()
    print(markdown_row(HEADER))
    print(markdown_row(["---"] * len(HEADER)))
    for row in table_rows(by_row):
        print(markdown_row(row))


def main(arguments):
    if len(arguments) == 2 and arguments[0] == "--machine":
        print(json.dumps({"machine": machine(arguments[1])}, ensure_ascii=False))
    elif len(arguments) == 1 and not arguments[0].startswith("-"):
        print_table(arguments[0])
    else:
        print(__doc__.strip(), file=sys.stderr)
        return 2
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
