// The crash test: a writer process (crash_writer) writes a changed IPTC
// record into 1,000 images while it is killed with SIGKILL at random moments
// and started again, until it has gone through every image or the time bound
// passes. A kill can land anywhere in a write: while the new file is built,
// while the temporary file is written, between the move of the original to
// its numbered backup and the move of the new file to the image's path, or
// before the backup is deleted. Afterwards no image may be lost: each one is
// readable at its path as its original or as a complete new version, or its
// path is empty or broken and a numbered backup "NAME.NNN" holds a complete
// version. A backup holding the writer's own earlier complete version counts
// too: when a write finished but its progress line was cut off, the next run
// writes the image again, and a kill in that second write leaves the first
// write's result in the backup.
//
// The complete versions of each source image are made beforehand by the same
// writer without kills: the original V0, V1 = one write into V0, V2 = one
// write into V1 and so on (a TIFF grows with each write, so V2 differs from
// V1). An image is whole when its bytes equal one of them.
//
// Images and backups live on /dev/shm when it is there: SIGKILL does not care
// whether data reached the disk, and without the disk's flushes far more
// kills land between the steps of the swap rather than in a flush.

#include <gtest/gtest.h>

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "iptc/IPTC.h"
#include "tests/reliability/CrashWriter.h"
#include "tests/support/Corpus.h"
#include "tests/support/TempDir.h"

extern char** environ;

namespace vliptc::test {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr int kImages = 1000;
constexpr auto kTimeBound = std::chrono::seconds(40);
// The writer is killed a random time after it reported ready, up to this
// many times the time one write takes: about one write a run, so kills spread over every step of a write and
// the images are all gone through after a thousand runs or so.
constexpr int kDelayInWrites = 2;
// Complete versions kept per source: V0 (the original) to V3. An image is
// written again when a kill falls between its write and its progress line;
// V3 needs that to happen twice to the same image.
constexpr int kVersions = 4;

// Small real files, one per writer path: JPEG with and without an APP13
// segment, TIFF with and without an IPTC entry (insertion with the offset
// shift, and the block moved to the end), a Photoshop document whose IPTC
// record is too small for the new block (rebuilt with reserve; the next write
// of the same record goes in place with the same bytes).
const char* const kSources[] = {
    "jpeg/et_PhotoMechanic.jpg", "jpeg/et_Canon.jpg",    "tiff/ex2_mini9.tif",
    "tiff/et_ExifTool.tif",      "psd/et_Photoshop.psd",
};
constexpr std::size_t kSourceCount = std::size(kSources);

// A writer process with its standard output on a pipe.
class WriterProcess {
public:
    explicit WriterProcess(const std::vector<std::string>& arguments) {
        int pipeEnds[2];
        if (::pipe(pipeEnds) != 0) return;
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, pipeEnds[1], STDOUT_FILENO);
        posix_spawn_file_actions_addclose(&actions, pipeEnds[0]);
        std::vector<char*> argv;
        for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
        argv.push_back(nullptr);
        if (posix_spawn(&m_pid, argv[0], &actions, nullptr, argv.data(), environ) != 0) m_pid = -1;
        posix_spawn_file_actions_destroy(&actions);
        ::close(pipeEnds[1]);
        m_out = pipeEnds[0];
    }
    WriterProcess(const WriterProcess&) = delete;
    WriterProcess& operator=(const WriterProcess&) = delete;
    ~WriterProcess() {
        if (m_pid > 0) {
            ::kill(m_pid, SIGKILL);
            Wait();
        }
        if (m_out >= 0) ::close(m_out);
    }

    // Blocks until the writer printed "ready"; false when it ended first.
    bool WaitReady() {
        std::string text;
        char c = 0;
        while (m_pid > 0 && ::read(m_out, &c, 1) == 1) {
            if (c == '\n') return text == "ready";
            text += c;
        }
        return false;
    }
    void Kill() {
        if (m_pid > 0) ::kill(m_pid, SIGKILL);
    }
    // The wait status; -1 when the process never started.
    int Wait() {
        if (m_pid <= 0) return -1;
        int status = 0;
        while (::waitpid(m_pid, &status, 0) < 0 && errno == EINTR) {
        }
        m_pid = -1;
        return status;
    }

private:
    pid_t m_pid = -1;
    int m_out = -1;
};

bool ExitedCleanly(int status) { return status >= 0 && WIFEXITED(status) && WEXITSTATUS(status) == 0; }
bool WasKilled(int status) { return status >= 0 && WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL; }

std::string Extension(const std::string& path) { return fs::path(path).extension().string(); }

void WriteLines(const std::string& path, const std::vector<std::string>& lines) {
    std::ofstream out(path);
    for (const std::string& line : lines) out << line << '\n';
}

// One folder for the writer's runs: the images, their list, the progress file
// and a user folder for the store.
struct WriterFolder {
    std::string path;
    std::vector<std::string> images;

    std::string List() const { return path + "images.txt"; }
    std::string Progress() const { return path + "progress.txt"; }
    std::vector<std::string> Arguments() const {
        return {VLIPTC_CRASH_WRITER, fs::absolute("resources/").string(), path, List(), Progress()};
    }
};

// Runs the writer over the folder without killing it; every write must
// succeed. Adds the time from "ready" to its end to writing.
void WriteAllOnce(const WriterFolder& folder, Clock::duration& writing) {
    fs::remove(folder.Progress());
    WriteLines(folder.List(), folder.images);
    WriterProcess writer(folder.Arguments());
    ASSERT_TRUE(writer.WaitReady()) << "the crash writer did not start";
    const auto ready = Clock::now();
    ASSERT_TRUE(ExitedCleanly(writer.Wait()));
    writing += Clock::now() - ready;
    const std::vector<ProgressLine> progress = ReadProgress(folder.Progress());
    ASSERT_EQ(progress.size(), folder.images.size());
    for (const ProgressLine& line : progress) {
        ASSERT_EQ(line.result, CIPTC::kSuccess) << folder.images[line.index];
    }
}

// The complete versions of every source, V0 to V3, each made by the writer
// from the one before, and the time one write takes.
struct References {
    std::vector<std::vector<std::string>> versions;
    Clock::duration perWrite{};
};

References CompleteVersions(const std::string& folderPath) {
    References references;
    references.versions.resize(kSourceCount);
    WriterFolder folder{folderPath, {}};
    for (std::size_t s = 0; s < kSourceCount; ++s) {
        folder.images.push_back(folderPath + "source" + std::to_string(s) + Extension(kSources[s]));
        fs::copy_file(kCorpus + kSources[s], folder.images[s]);
        references.versions[s].push_back(ReadFile(folder.images[s]));
    }
    Clock::duration writing{};
    for (int v = 1; v < kVersions; ++v) {
        WriteAllOnce(folder, writing);
        if (::testing::Test::HasFatalFailure()) return references;
        for (std::size_t s = 0; s < kSourceCount; ++s) {
            references.versions[s].push_back(ReadFile(folder.images[s]));
        }
    }
    references.perWrite = writing / ((kVersions - 1) * static_cast<int>(kSourceCount));
    return references;
}

// Which complete version the bytes are; -1 for none.
int VersionOf(const std::string& bytes, const std::vector<std::string>& versions) {
    const auto found = std::find(versions.begin(), versions.end(), bytes);
    return found == versions.end() ? -1 : static_cast<int>(found - versions.begin());
}

// The end state of the images, and the lost ones described.
struct Outcome {
    int original = 0;         // the original bytes at the path
    int rewritten = 0;        // a complete new version at the path
    int onlyInBackup = 0;     // the path empty or broken, a complete version in a backup
    int withStaleBackup = 0;  // whole at the path, a backup beside it
    int temporaryFiles = 0;   // temporary files of cut-off writes
    std::vector<std::string> lost;
};

// The image's numbered backups ("NAME.000" ...), from a listing of its folder.
std::vector<std::string> BackupsOf(const std::string& image, const std::vector<std::string>& listing) {
    std::vector<std::string> backups;
    for (const std::string& name : listing) {
        if (name.size() == image.size() + 4 && name.compare(0, image.size(), image) == 0 &&
            name[image.size()] == '.' &&
            std::all_of(name.end() - 3, name.end(), [](char c) { return c >= '0' && c <= '9'; })) {
            backups.push_back(name);
        }
    }
    std::sort(backups.begin(), backups.end());
    return backups;
}

// Reads the image as the library does; a complete version must read, with
// the writer's caption once it was written.
bool ReadsAs(CIPTC& store, const std::string& path, int version) {
    CIPTC::SIPTCFormatInfo format;
    const CIPTC::EError result = store.ReadIPTCBlob(path.c_str(), format);
    if (version == 0) return result == CIPTC::kSuccess || result == CIPTC::kNoIPTCBlock;
    std::vector<CVLProperty> caption;
    return result == CIPTC::kSuccess && store.GetField(kCrashCaptionId, caption) && caption.size() == 1 &&
           caption[0].String() == kCrashCaption;
}

Outcome Inspect(const WriterFolder& folder, const std::vector<std::vector<std::string>>& versions,
                CIPTC& store) {
    std::vector<std::string> listing;
    Outcome outcome;
    for (const auto& entry : fs::directory_iterator(folder.path)) {
        const std::string name = entry.path().string();
        listing.push_back(name);
        if (entry.path().filename().string().find(".vliptc-") != std::string::npos) ++outcome.temporaryFiles;
    }
    for (std::size_t i = 0; i < folder.images.size(); ++i) {
        const std::string& image = folder.images[i];
        const auto& complete = versions[i % kSourceCount];
        const std::vector<std::string> backups = BackupsOf(image, listing);
        const int atPath = fs::exists(image) ? VersionOf(ReadFile(image), complete) : -1;
        if (atPath >= 0 && ReadsAs(store, image, atPath)) {
            ++(atPath == 0 ? outcome.original : outcome.rewritten);
            if (!backups.empty()) ++outcome.withStaleBackup;
            continue;
        }
        const bool kept = std::any_of(backups.begin(), backups.end(), [&](const std::string& backup) {
            return VersionOf(ReadFile(backup), complete) >= 0;
        });
        if (kept) {
            ++outcome.onlyInBackup;
            continue;
        }
        std::ostringstream what;
        what << image << ": " << (fs::exists(image) ? "broken" : "missing") << " at its path, "
             << backups.size() << " backup(s), none complete";
        outcome.lost.push_back(what.str());
    }
    return outcome;
}

unsigned Seed() {
    if (const char* given = std::getenv("VLIPTC_CRASH_SEED")) return static_cast<unsigned>(std::stoul(given));
    return std::random_device{}();
}

TEST(CrashTest, KilledWriterLosesNoImage) {
    VLIPTC_SKIP_WITHOUT_CORPUS();
    if (fs::is_directory("/dev/shm")) ::setenv("TMPDIR", "/dev/shm", 1);
    const TempDir dir;
    const References references = CompleteVersions(dir.Path());
    if (HasFatalFailure()) return;
    const auto& versions = references.versions;
    for (std::size_t s = 0; s < kSourceCount; ++s) {
        ASSERT_NE(versions[s][0], versions[s][1]) << kSources[s] << ": the writer changed nothing";
    }

    WriterFolder folder{dir.Path() + "images/", {}};
    fs::create_directory(folder.path);
    for (int i = 0; i < kImages; ++i) {
        const std::size_t s = static_cast<std::size_t>(i) % kSourceCount;
        char name[32];
        std::snprintf(name, sizeof name, "image%04d", i);
        folder.images.push_back(folder.path + name + Extension(kSources[s]));
        fs::copy_file(kCorpus + kSources[s], folder.images.back());
    }
    WriteLines(folder.List(), folder.images);

    const unsigned seed = Seed();
    std::mt19937 random(seed);
    std::cout << "crash test: seed " << seed << " (set VLIPTC_CRASH_SEED to repeat the delays)\n";
    // The time a write takes, first from the reference runs, then from the
    // kill runs: the time they ran after "ready" over the writes they finished.
    // On a fast file system the writer gets some writes done before the test
    // hears "ready", so this settles low and the kills come as early as the
    // test can send them; on a slow one it grows until runs finish writes.
    Clock::duration given{};
    Clock::rep finishedWrites = 0;
    auto perWrite = [&] { return finishedWrites == 0 ? references.perWrite : given / finishedWrites; };
    const auto start = Clock::now();
    int kills = 0;
    bool finished = false;
    while (!finished && Clock::now() - start < kTimeBound) {
        const auto bound = std::chrono::duration_cast<std::chrono::microseconds>(perWrite() * kDelayInWrites);
        const std::chrono::microseconds delay(
            std::uniform_int_distribution<std::int64_t>(0, std::max<std::int64_t>(bound.count(), 1))(random));
        WriterProcess writer(folder.Arguments());
        ASSERT_TRUE(writer.WaitReady()) << "the crash writer did not start";
        const auto ready = Clock::now();
        // A write takes tens of microseconds on /dev/shm, less than a sleep
        // oversleeps: the delay is waited out by polling the clock.
        while (Clock::now() - ready < delay) {
        }
        writer.Kill();
        given += Clock::now() - ready;
        const int status = writer.Wait();
        ASSERT_TRUE(ExitedCleanly(status) || WasKilled(status))
            << "the crash writer failed: status " << status;
        finished = ExitedCleanly(status);
        kills += WasKilled(status) ? 1 : 0;
        finishedWrites = static_cast<Clock::rep>(ReadProgress(folder.Progress()).size());
    }
    std::cout << "crash test: the delay bound ended at "
              << std::chrono::duration_cast<std::chrono::microseconds>(perWrite() * kDelayInWrites).count()
              << " us after \"ready\"\n";
    const double seconds = std::chrono::duration<double>(Clock::now() - start).count();

    const std::vector<ProgressLine> progress = ReadProgress(folder.Progress());
    const auto succeeded = std::count_if(progress.begin(), progress.end(), [](const ProgressLine& line) {
        return line.result == CIPTC::kSuccess;
    });
    CIPTC store;
    ASSERT_EQ(store.Initialize("resources/", dir.Path()), CIPTC::kSuccess);
    const Outcome outcome = Inspect(folder, versions, store);
    std::cout << "crash test: " << kImages << " images, " << succeeded << " writes succeeded, " << kills
              << " kills, " << seconds << " s" << (finished ? "" : " (time bound reached before the end)")
              << "\ncrash test: at the end " << outcome.rewritten << " rewritten, " << outcome.original
              << " original, " << outcome.onlyInBackup << " only in a numbered backup, "
              << outcome.withStaleBackup << " with a backup left beside them, " << outcome.temporaryFiles
              << " temporary files left; lost: " << outcome.lost.size() << "\n";
    for (const std::string& lost : outcome.lost) ADD_FAILURE() << "lost: " << lost;
    EXPECT_EQ(outcome.lost.size(), 0u);
    EXPECT_GT(kills, 0) << "the writer was never killed; the test proved nothing";
}

}  // namespace
}  // namespace vliptc::test
