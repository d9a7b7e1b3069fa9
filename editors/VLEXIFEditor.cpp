// The EXIF viewer and batch date editor driver: the checks of the selection,
// the questions and notices, the dialog run, and the write pass. It shares
// its pieces with the IPTC driver (editors/internal/).

#include "editors/VLEXIFEditor.h"

#include <string>

#include "editors/internal/DriverHost.h"
#include "editors/internal/Selection.h"
#include "editors/internal/WritePass.h"

namespace {

// The source name of the log lines.
constexpr const char* kLogSource = "VLEXIFEditor";
// The dialog's caption, also the progress window's title.
constexpr const char* kCaption = "Velora EXIF Viewer";

// What the editor shows (resources/strings.tsv), in the order of DriverStrings:
// unsupported formats and read-only files (notice, question), no valid files,
// write errors (notice, question), the progress text. The notice for a single
// file that could not be written (210) speaks of IPTC information: the two
// editors have always shown each other's text there.
constexpr vliptc::editors::internal::DriverStrings kStrings{{211, 212}, {213, 214}, 215, {210, 216}, 301};

// The template is edited from what it holds also when it is no container the
// reader knows or carries no EXIF data: the dialog then shows no rows.
bool TemplateReadable(CVLEXIF::EError loaded) {
    return loaded == CVLEXIF::errOK || loaded == CVLEXIF::errFormat || loaded == CVLEXIF::errNoEXIF;
}

}  // namespace

CVLEXIFEditor::CVLEXIFEditor(CVLWinEngine* engine, vliptc::editors::EditorUI* ui)
    : m_host(std::make_unique<vliptc::editors::internal::DriverHost>(engine, ui, kLogSource)) {}

CVLEXIFEditor::~CVLEXIFEditor() = default;

std::uint32_t CVLEXIFEditor::ShowEditor(const std::vector<std::uint32_t>& fileIds, std::uint32_t templateId,
                                        std::vector<std::uint32_t>& changed, int flags, QWidget* /*parent*/) {
    namespace internal = vliptc::editors::internal;
    // Without an engine no file can be resolved: nothing to do.
    if (m_host->Engine() == nullptr) return kResultAborted;

    // Whether a file may be written is the host's word alone here. With no
    // writable file left the read-only notice is followed by the
    // empty-selection notice.
    internal::Selection selection((flags & kFlagKeepFileTimes) != 0);
    const std::uint32_t selected = internal::SelectFiles(
        *m_host, fileIds, templateId, kStrings,
        [this](std::uint32_t id, const std::string& path) {
            if (!m_exif.IsSupportedFormat(path.c_str())) return internal::FileCheck::kUnsupported;
            if (!m_host->Engine()->FileSystemAccessor().IsFileMutable(id))
                return internal::FileCheck::kReadOnly;
            return internal::FileCheck::kValid;
        },
        selection);
    if (selected != kVLSuccess) return selected;
    if (const CVLEXIF::EError loaded = m_exif.LoadFile(selection.templatePath.c_str());
        !TemplateReadable(loaded)) {
        m_host->LogError("EXIFEdit: Failed to parse template file: %lu", {std::to_string(loaded)});
        return kResultTemplateUnreadable;
    }

    if (!m_host->UI().RunExifDialog(m_exif, /*viewOnly=*/false)) return kVLSuccess;

    // There are no write modes: every file receives the template's record as
    // edited, field for field. A file whose EXIF data cannot be read now is
    // passed over without a word; its progress step is still taken.
    const std::vector<CVLEXIF::SField> edited = m_exif.Fields();
    const internal::WritePassSteps steps{
        kCaption,
        kStrings,
        "EXIF: Processing file %s",
        "EXIF: Failed to update EXIF comments to file %s (%lu)",
        [&](std::uint32_t /*fileId*/, const std::string& path) {
            if (m_exif.LoadFile(path.c_str()) != CVLEXIF::errOK) return false;
            m_exif.Fields() = edited;
            return true;
        },
        [&](const std::string& path) -> std::uint32_t { return m_exif.StoreFile(path.c_str()); },
    };
    return internal::RunWritePass(*m_host, selection.valid, selection.times, steps, changed);
}
