#include "editors/internal/Selection.h"

#include <algorithm>

namespace vliptc::editors::internal {

namespace {

// Files of one kind were dropped. With none left the user is told and the
// call ends; otherwise asked whether to go on with the rest. False when the
// call ends.
bool ConfirmDropped(DriverHost& host, std::size_t left, const NoticeAndQuestion& strings) {
    if (left == 0) {
        host.Message(strings.notice, {}, Buttons::kOk, Icon::kInformation);
        return false;
    }
    return host.Message(strings.question, {}, Buttons::kYesNo, Icon::kQuestion) == Answer::kYes;
}

// With one writable file left (or none) the user is told, not asked; an empty
// selection is reported by the template choice that follows.
bool ConfirmReadOnlyDropped(DriverHost& host, std::size_t left, const NoticeAndQuestion& strings) {
    if (left > 1) return host.Message(strings.question, {}, Buttons::kYesNo, Icon::kQuestion) == Answer::kYes;
    host.Message(strings.notice, {}, Buttons::kOk, Icon::kInformation);
    return true;
}

}  // namespace

std::uint32_t SelectFiles(
    DriverHost& host, const std::vector<std::uint32_t>& fileIds, std::uint32_t templateId,
    const DriverStrings& strings,
    const std::function<FileCheck(std::uint32_t fileId, const std::string& path)>& check,
    Selection& selection) {
    bool unsupported = false;
    bool readOnly = false;
    bool missingCompanion = false;
    for (const std::uint32_t id : fileIds) {
        CVLURI uri;
        if (const std::uint32_t resolved = host.Resolve(id, uri); resolved != kVLSuccess) return resolved;
        switch (check(id, uri.WindowsPath())) {
            case FileCheck::kValid:
                selection.valid.push_back(id);
                break;
            case FileCheck::kUnsupported:
                unsupported = true;
                break;
            case FileCheck::kReadOnly:
                readOnly = true;
                break;
            case FileCheck::kMissingCompanion:
                missingCompanion = true;
                break;
        }
    }

    const std::size_t left = selection.valid.size();
    if ((missingCompanion && !ConfirmDropped(host, left, strings.missingCompanion)) ||
        (unsupported && !ConfirmDropped(host, left, strings.unsupported)) ||
        (readOnly && !ConfirmReadOnlyDropped(host, left, strings.readOnly))) {
        return kResultAborted;
    }

    const std::vector<std::uint32_t>& valid = selection.valid;
    if (std::find(valid.begin(), valid.end(), templateId) == valid.end()) {
        if (valid.empty()) {
            host.Message(strings.noValidFiles, {}, Buttons::kOk, Icon::kExclamation);
            return kResultAborted;
        }
        templateId = valid.front();
    }
    CVLURI uri;
    if (const std::uint32_t resolved = host.Resolve(templateId, uri); resolved != kVLSuccess) return resolved;
    selection.templateId = templateId;
    selection.templatePath = uri.WindowsPath();
    selection.times.NoteTemplate(templateId, selection.templatePath);
    return kVLSuccess;
}

}  // namespace vliptc::editors::internal
