// Saving the user lists and synonyms to "vliptcusr.dat", with the previous
// file kept as "vliptcusr.dat.bak".

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>

#include "platform/OutputFile.h"
#include "tags/IPTCINI.h"

namespace fs = vliptc::platform;

namespace {

// Line end of "vliptcusr.dat" on every platform, so the file a user copies
// between systems stays byte for byte the same.
constexpr const char* kLineEnd = "\r\n";

// A value in quotes; a quote inside it is doubled. (The reader turns a pair
// into one quote but also toggles quoting, so such a value does not come back
// as it was. The format has no better escape.)
void AppendQuoted(std::string& out, const std::string& value) {
    out += '"';
    for (const char c : value) {
        if (c == '"') out += '"';
        out += c;
    }
    out += '"';
}

}  // namespace

void CVLIPTCINI::FormatUserLists(std::string& out) const {
    out.clear();
    // Values go out byte for byte: a line break stored inside a value stays
    // as it is, protected by the quotes.
    for (const auto& [id, values] : m_userLists) {
        out += '[';
        out += kLineEnd;
        out += "ID\t" + std::to_string(id) + kLineEnd;
        for (const CVLProperty& value : values) {
            AppendQuoted(out, value.String());
            out += kLineEnd;
        }
        out += ']';
        out += kLineEnd;
        out += kLineEnd;
    }
    for (const auto& [id, list] : m_synonyms) {
        out += '[';
        out += kLineEnd;
        out += "SID\t" + std::to_string(id) + kLineEnd;
        for (const auto& [keyword, synonyms] : list) {
            // A keyword without synonyms carries nothing worth saving.
            if (synonyms.empty()) continue;
            AppendQuoted(out, keyword.String());
            for (const CVLProperty& synonym : synonyms) {
                out += ',';
                AppendQuoted(out, synonym.String());
            }
            out += kLineEnd;
        }
        out += ']';
        out += kLineEnd;
        out += kLineEnd;
    }
}

bool CVLIPTCINI::StoreUserLists() {
    if (!m_loaded) return true;

    // The previous file becomes the backup. The old backup goes first, so the
    // move cannot meet an existing file; if it could not be removed, the move
    // fails and the save stops with the data file untouched.
    const std::string backupPath = m_userDataPath + ".bak";
    if (fs::Exists(backupPath)) static_cast<void>(fs::RemoveFile(backupPath));
    bool backedUp = false;
    if (fs::IsRegularFile(m_userDataPath)) {
        if (!fs::RenameNoReplace(m_userDataPath, backupPath)) return false;
        backedUp = true;
    }

    // The new lists go to a file beside the data file, which takes the data
    // file's name only when it is complete. Whatever fails on the way, the
    // partial file goes and the backup is moved back under its own name.
    fs::OutputFile out;
    const auto restore = [&] {
        out.Discard();
        if (backedUp) static_cast<void>(fs::RenameNoReplace(backupPath, m_userDataPath));
    };
    bool result = true;
    try {
        std::string content;
        FormatUserLists(content);
        const std::filesystem::path data(m_userDataPath);
        bool written = out.CreateUnique(data.parent_path().string(), data.filename().string() + ".");
        if (written && backedUp) out.CopyPermissionsFrom(backupPath);
        written = written &&
                  out.Write(std::span(reinterpret_cast<const std::uint8_t*>(content.data()), content.size()));
        if (written && m_afterUserListsWritten) m_afterUserListsWritten();
        written = written && out.Close() && fs::RenameNoReplace(out.Path(), m_userDataPath);
        // A file that cannot be made is not an error here (a stream error);
        // the previous lists are back at their place.
        if (!written) restore();
    } catch (...) {
        restore();
        result = false;
    }
    // Our own save is not a change made by someone else (IsDirty).
    m_userDataTime = fs::GetLastWriteTime(m_userDataPath);
    return result;
}
