// Parallel batches: workers take the next file from a shared counter; results
// wait in their slot until every file before them is printed.

#include "apps/vliptc/Batch.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <exception>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "apps/vliptc/Context.h"

namespace vliptc::cli {

namespace {

// A one-line bar redrawn in place on standard error. Lines printed while it
// runs clear it first and it is drawn again below them.
class ProgressBar {
public:
    explicit ProgressBar(std::size_t total)
        : m_total(total), m_enabled(total > kProgressFrom && ::isatty(STDERR_FILENO) != 0) {}

    bool Enabled() const noexcept { return m_enabled; }

    void Clear() {
        if (!m_drawn) return;
        std::fputs("\r\033[K", stderr);
        m_drawn = false;
    }

    // Redrawn at most every kInterval while it stands, at once after a clear.
    void Show(std::size_t done) {
        if (!m_enabled) return;
        const auto now = std::chrono::steady_clock::now();
        if (m_drawn && done < m_total && now - m_last < kInterval) return;
        m_last = now;
        const std::size_t filled = done * kWidth / m_total;
        std::string bar(filled, '#');
        bar.resize(kWidth, '.');
        std::fprintf(stderr, "\r[%s] %zu/%zu files", bar.c_str(), done, m_total);
        m_drawn = true;
    }

private:
    static constexpr std::size_t kWidth = 30;
    static constexpr std::chrono::milliseconds kInterval{100};
    std::size_t m_total;
    bool m_enabled;
    bool m_drawn = false;
    std::chrono::steady_clock::time_point m_last{};
};

constexpr std::size_t kFilesTakenAtOnce = 8;

FileOutcome Guarded(const FileWork& work, CIPTC& store, const std::string& path) {
    try {
        return work(store, path);
    } catch (const std::exception& error) {
        return {{}, "vliptc: " + path + ": " + error.what() + "\n", true};
    } catch (...) {
        return {{}, "vliptc: " + path + ": unexpected failure\n", true};
    }
}

}  // namespace

void PrintOutcome(std::size_t, const FileOutcome& outcome) {
    std::fwrite(outcome.out.data(), 1, outcome.out.size(), stdout);
    if (outcome.err.empty()) return;
    std::fflush(stdout);  // keep the order with standard error
    std::fwrite(outcome.err.data(), 1, outcome.err.size(), stderr);
}

std::size_t RunBatch(const std::vector<std::string>& paths, std::vector<std::unique_ptr<CIPTC>>& stores,
                     const FileWork& work, const Emit& emit) {
    const std::size_t total = paths.size();
    std::vector<std::optional<FileOutcome>> results(total);
    std::atomic<std::size_t> nextToTake{0};
    std::mutex mutex;  // guards everything below, and the printing
    std::size_t nextToEmit = 0;
    std::size_t finished = 0;
    std::size_t failed = 0;
    ProgressBar progress(total);

    // Workers take files a few at a time and hand their results over under
    // the lock once per handful: a lock taken per file, for files that take
    // microseconds, keeps the workers waiting for each other.
    auto worker = [&](CIPTC& store) {
        std::vector<FileOutcome> done;
        for (;;) {
            const std::size_t first = nextToTake.fetch_add(kFilesTakenAtOnce);
            if (first >= total) return;
            const std::size_t end = std::min(total, first + kFilesTakenAtOnce);
            done.clear();
            for (std::size_t index = first; index < end; ++index)
                done.push_back(Guarded(work, store, paths[index]));
            const std::lock_guard lock(mutex);
            for (std::size_t index = first; index < end; ++index)
                results[index] = std::move(done[index - first]);
            finished += end - first;
            while (nextToEmit < total && results[nextToEmit]) {
                const FileOutcome& ready = *results[nextToEmit];
                if (!ready.out.empty() || !ready.err.empty()) progress.Clear();
                if (results[nextToEmit]->failed) ++failed;
                emit(nextToEmit, *results[nextToEmit]);
                results[nextToEmit].reset();
                ++nextToEmit;
            }
            if (progress.Enabled()) {
                std::fflush(stdout);  // the lines above the bar first
                progress.Show(finished);
            }
        }
    };

    if (stores.size() <= 1) {
        if (!stores.empty()) worker(*stores.front());
    } else {
        std::vector<std::thread> threads;
        threads.reserve(stores.size());
        for (auto& store : stores) threads.emplace_back(worker, std::ref(*store));
        for (auto& thread : threads) thread.join();
    }
    progress.Clear();
    return failed;
}

int BatchExitStatus(std::size_t failed, std::size_t files) {
    if (failed > 0 && files > 1) std::fprintf(stderr, "vliptc: %zu of %zu files failed\n", failed, files);
    return failed == 0 ? kExitOk : kExitFailed;
}

}  // namespace vliptc::cli
