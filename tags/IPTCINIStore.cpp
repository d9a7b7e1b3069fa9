// Saving the user lists and synonyms to "vliptcusr.dat", with the previous
// file kept as "vliptcusr.dat.bak".

#include <fstream>
#include <string>

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

    bool result = true;
    try {
        std::string content;
        FormatUserLists(content);
        // A file that cannot be created or written is not an error here: the
        // previous lists are still in the backup.
        std::ofstream out(m_userDataPath, std::ios::binary | std::ios::trunc);
        if (out) {
            out.write(content.data(), static_cast<std::streamsize>(content.size()));
            if (m_afterUserListsWritten) m_afterUserListsWritten();
            out.close();
        }
    } catch (...) {
        // Put the previous file back in place of whatever was written.
        if (backedUp) {
            if (fs::Exists(m_userDataPath)) static_cast<void>(fs::RemoveFile(m_userDataPath));
            static_cast<void>(fs::RenameNoReplace(backupPath, m_userDataPath));
        }
        result = false;
    }
    // Our own save is not a change made by someone else (IsDirty).
    m_userDataTime = fs::GetLastWriteTime(m_userDataPath);
    return result;
}
