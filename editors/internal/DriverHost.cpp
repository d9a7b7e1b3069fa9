#include "editors/internal/DriverHost.h"

#include "editors/StringTable.h"
#include "editors/internal/SilentUI.h"
#include "host/QXTLogfile.h"

namespace vliptc::editors::internal {

namespace {

// The level of the informal lines that follow a write pass file by file.
constexpr int kProgressLogLevel = 4;

}  // namespace

DriverHost::DriverHost(CVLWinEngine* engine, EditorUI* ui, const char* logSource)
    : m_engine(engine),
      m_ownUI(ui == nullptr ? std::make_unique<SilentUI>() : nullptr),
      m_ui(ui == nullptr ? m_ownUI.get() : ui),
      m_logSource(logSource) {}

DriverHost::~DriverHost() = default;

Answer DriverHost::Message(unsigned stringId, const std::string& path, Buttons buttons, Icon icon) {
    return m_ui->ShowMessage(stringId, FormatText(StringText(stringId), {path}), buttons, icon);
}

std::uint32_t DriverHost::Resolve(std::uint32_t fileId, CVLURI& uri) {
    const std::uint32_t resolved = m_engine->GetFileURI(fileId, uri);
    if (resolved != kVLSuccess) {
        if (CQXTLogfile* log = m_engine->Logfile()) log->AddError(resolved, __LINE__, m_logSource);
    }
    return resolved;
}

bool DriverHost::ResolveMutable(std::uint32_t fileId, CVLURI& uri) {
    return m_engine->GetFileURI(fileId, uri) == kVLSuccess &&
           m_engine->FileSystemAccessor().IsFileMutable(fileId);
}

void DriverHost::LogError(std::string_view format, std::initializer_list<std::string_view> args) {
    if (CQXTLogfile* log = m_engine->Logfile()) {
        log->AddError(FormatText(format, args).c_str(), __LINE__, m_logSource);
    }
}

void DriverHost::LogHostError(std::uint32_t code, const char* text) {
    if (CQXTLogfile* log = m_engine->Logfile()) log->AddError(code, text, __LINE__, m_logSource);
}

void DriverHost::LogProgress(std::string_view format, std::initializer_list<std::string_view> args) {
    if (CQXTLogfile* log = m_engine->Logfile()) {
        log->AddInformal(FormatText(format, args).c_str(), kProgressLogLevel, __LINE__, m_logSource);
    }
}

}  // namespace vliptc::editors::internal
