#include "editors/internal/WritePass.h"

#include "editors/StringTable.h"

namespace vliptc::editors::internal {

std::uint32_t RunWritePass(DriverHost& host, const std::vector<std::uint32_t>& valid,
                           const KeptFileTimes& times, const WritePassSteps& steps,
                           std::vector<std::uint32_t>& changed) {
    // Let the windows under the closed dialog repaint before the long pass.
    host.UI().DrainMessages();
    host.UI().BeginWaitCursor();
    const std::string progressText(StringText(steps.strings.progressText));
    auto progress = host.UI().OpenProgress(steps.progressTitle, 0, static_cast<int>(valid.size()));

    std::uint32_t result = kVLSuccess;
    for (std::size_t index = 0; index < valid.size() && result != kResultAborted; ++index) {
        const std::uint32_t id = valid[index];
        // A file that went away or became read-only since the checks is
        // passed over without a word.
        CVLURI uri;
        if (!host.ResolveMutable(id, uri)) continue;
        const std::string path = uri.WindowsPath();

        // Noted before the read, which may move the access time.
        const KeptFileTimes::Noted noted = times.Note(id, path);
        if (steps.prepare(id, path)) {
            host.LogProgress(steps.processingLog, {uri.AsString()});
            const std::uint32_t written = steps.write(path);
            KeptFileTimes::Restore(noted);

            if (written != 0) {
                host.LogError(steps.failureLog, {uri.AsString(), std::to_string(written)});
                if (valid.size() < 2) {
                    host.Message(steps.strings.writeError.notice, path, Buttons::kOk, Icon::kError);
                    result = kResultAborted;
                } else if (host.Message(steps.strings.writeError.question, path, Buttons::kYesNo,
                                        Icon::kError) != Answer::kYes) {
                    result = kResultAborted;
                    break;
                }
            } else {
                changed.push_back(id);
                // Both editors have always logged a refused refresh with this text.
                const std::uint32_t refreshed = host.Engine()->RefreshFile(id);
                if (refreshed != kVLSuccess) host.LogHostError(refreshed, "Updating file after IPTC update");
            }
        }

        progress->SetText(FormatText(progressText, {path}));
        progress->SetPos(static_cast<int>(index));  // the position before this file counts
        if (progress->IsCancelled()) {
            result = kResultAborted;
            break;
        }
    }
    host.UI().EndWaitCursor();
    return result;
}

}  // namespace vliptc::editors::internal
