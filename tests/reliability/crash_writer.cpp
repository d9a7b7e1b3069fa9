// The writer process of the crash test: writes a changed IPTC record into
// every image of a list, in order, the way a batch editor does (read the
// file's record, change fields, write it back). The crash test kills it with
// SIGKILL at random moments and starts it again.
//
//   crash_writer DEFINITIONS_FOLDER USER_FOLDER LIST_FILE PROGRESS_FILE
//
// LIST_FILE names one image per line. After each write the writer appends
// "INDEX RESULT" to PROGRESS_FILE; a new run resumes behind the last complete
// line, so the file whose write was cut off is written again (or, when the
// kill left its path empty, fails to open). Once the images are set up it
// prints "ready" on standard output, so the test can time its kill from the
// first write rather than from the process start. Exit status 0 when every
// image was attempted, 2 when the store or the lists cannot be set up.

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "iptc/IPTC.h"
#include "tests/reliability/CrashWriter.h"

namespace {

using namespace vliptc::test;

std::vector<std::string> ReadLines(const std::string& path) {
    std::vector<std::string> lines;
    std::ifstream in(path);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

bool AppendLine(int fd, const std::string& line) {
    return ::write(fd, line.data(), line.size()) == static_cast<ssize_t>(line.size());
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 5) {
        std::fprintf(stderr, "usage: crash_writer DEFINITIONS_FOLDER USER_FOLDER LIST_FILE PROGRESS_FILE\n");
        return 2;
    }
    CIPTC store;
    if (store.Initialize(argv[1], argv[2]) != CIPTC::kSuccess) {
        std::fprintf(stderr, "crash_writer: the tag definitions in %s cannot be loaded\n", argv[1]);
        return 2;
    }
    const std::vector<std::string> images = ReadLines(argv[3]);
    // Resume behind the last complete progress line.
    const auto done = ReadProgress(argv[4]);
    const std::size_t first = done.empty() ? 0 : done.back().index + 1;
    // O_APPEND: each progress line lands in one write at the end of the file.
    const int progress = ::open(argv[4], O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    if (images.empty() || progress < 0) {
        std::fprintf(stderr, "crash_writer: no images in %s, or %s cannot be opened\n", argv[3], argv[4]);
        return 2;
    }
    std::printf("ready\n");
    std::fflush(stdout);

    for (std::size_t i = first; i < images.size(); ++i) {
        const char* path = images[i].c_str();
        CIPTC::SIPTCFormatInfo format;
        if (store.ReadIPTCBlob(path, format) != CIPTC::kSuccess) format = store.GetFormatFromFileExt(path);
        store.SetField(kCrashCaptionId, CVLProperty(std::string(kCrashCaption)), true);
        std::vector<CVLProperty> keywords;
        for (const char* keyword : kCrashKeywords) keywords.emplace_back(std::string(keyword));
        store.SetField(kCrashKeywordsId, keywords);
        const CIPTC::EError result = store.WriteIPTCBlob(path, format);
        if (!AppendLine(progress, std::to_string(i) + " " + std::to_string(result) + "\n")) return 2;
    }
    ::close(progress);
    return 0;
}
