#pragma once

// The loop every comparison harness shares. A harness is one program per
// library (ours, each peer, the floors); it names its tasks and hands them
// to RunHarness, which runs one task over a list of files in this process
// and prints what it measured, so that scripts/bench.sh can compare the
// programs run for run.
//
//   HARNESS TASK LIST_FILE [--passes N]
//
// LIST_FILE holds one path a line. Each pass runs the task once per file, in
// list order, and prints one JSON object on a line of standard output:
//
//   {"harness":"vliptc","task":"iptc-read","pass":1,"files":2000,
//    "failures":0,"seconds":0.0513,"bytes":2345678901,
//    "base_rss_kb":4100,"peak_rss_kb":9800}
//
//   seconds      wall time of the pass (steady clock), the task's calls only
//   bytes        the sizes of the files the pass went through, summed (taken
//                before the pass, so that MB/s can be worked out for writes)
//   base_rss_kb  resident set at the start of the first pass
//   peak_rss_kb  the process's peak resident set so far (getrusage)
//
// A task returns false for a file it could not handle; the pass goes on and
// counts it in "failures". Exit codes: 0 done (even with failures), 2 bad
// arguments or an unknown task or an unreadable list.

#include <functional>
#include <span>
#include <string>
#include <string_view>

namespace vliptc::bench {

struct Task {
    std::string name;                                // "iptc-read", "touch-64k", ...
    std::function<bool(const std::string& path)> run;  // one file; false when it failed
};

int RunHarness(std::string_view harness, std::span<const Task> tasks, int argc, char** argv);

}  // namespace vliptc::bench
