#include "editors/internal/SilentUI.h"

namespace vliptc::editors::internal {

namespace {

class SilentProgress final : public ProgressWindow {
public:
    void SetText(const std::string&) override {}
    void SetPos(int) override {}
    bool IsCancelled() override { return false; }
};

}  // namespace

Answer SilentUI::ShowMessage(unsigned, const std::string&, Buttons buttons, Icon) {
    return buttons == Buttons::kYesNo ? Answer::kNo : Answer::kOk;
}

bool SilentUI::RunSheet(const SheetRequest&, EditModes&) { return false; }

bool SilentUI::RunExifDialog(CVLEXIF&, bool) { return false; }

std::unique_ptr<ProgressWindow> SilentUI::OpenProgress(const std::string&, int, int) {
    return std::make_unique<SilentProgress>();
}

}  // namespace vliptc::editors::internal
