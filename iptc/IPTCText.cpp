// Starting a store on definitions held as text by the host, for programs that
// carry the default definitions inside them and need no installed files.

#include "iptc/IPTC.h"

CIPTC::EError CIPTC::InitializeFromText(const std::string& definitionsText, const std::string& userFolder) {
    m_definitionFolder.clear();
    m_userFolder = userFolder;
    m_templatePath = WithTrailingSeparator(userFolder) + "vliptctmpl.dat";

    // As Initialize: a failed start leaves the flag as it was, and a damaged
    // template file only means that no templates are offered.
    if (!m_tags.LoadFromText(definitionsText, WithTrailingSeparator(userFolder))) return kNotInitialized;
    static_cast<void>(LoadTemplates(m_templatePath));
    m_initialized = true;
    return kSuccess;
}
