// Loading the definitions from text held by the host (built into a program)
// rather than from "vliptctags.ipt" in a definitions folder.

#include "tags/IPTCINI.h"

namespace fs = vliptc::platform;

namespace {

constexpr const char* kUserDataFileName = "vliptcusr.dat";  // user folder
constexpr const char* kUserTagsFileName = "vliptcusr.ipt";  // user folder

}  // namespace

bool CVLIPTCINI::LoadFromText(const std::string& definitionsText, const std::string& userFolder) {
    bool result = false;
    try {
        m_tagsPath.clear();
        m_userDataPath = userFolder + kUserDataFileName;
        m_userTagsPath = userFolder + kUserTagsFileName;
        m_tagsFromText = true;
        m_tags.clear();
        m_userLists.clear();
        m_synonyms.clear();
        m_tagsTime.reset();
        m_userDataTime = fs::GetLastWriteTime(m_userDataPath);
        m_userTagsTime = fs::GetLastWriteTime(m_userTagsPath);

        // The same order as Load: the shipped definitions, then the user's;
        // the result is that of the last one parsed.
        if (!definitionsText.empty()) {
            m_buffer = definitionsText;  // the parser works on its own zero-terminated copy
            result = LoadINIFile(m_buffer.data());
        }
        FreeBuffer();
        if (ReadFileToBuffer(m_userTagsPath, m_buffer)) result = LoadINIFile(m_buffer.data());
        FreeBuffer();
    } catch (...) {
        FreeBuffer();
        result = false;
    }
    m_loaded = true;
    return result;
}
