#pragma once

// "Description": caption, special instructions, object name, headline, byline
// and its title, credit, copyright, caption writer and source, each with its
// thesaurus button; the presets (templates); the character-set conversions
// and the clipboard; and the line that names the template file.

#include <memory>
#include <string>
#include <string_view>

#include "editors/sheet/PageBase.h"

namespace Ui {
class PageDescription;
}

namespace vliptc::editors {

class IPTCClipboard;

class CPPIPTCCaption : public CPPIPTCBase {
    Q_OBJECT

public:
    explicit CPPIPTCCaption(SheetContext& context, QWidget* parent = nullptr);
    ~CPPIPTCCaption() override;

private:
    void ExchangeControls(Direction direction) override;

    void LoadPreset();
    void StorePreset();
    void DeletePreset();
    // Re-encodes every text value of the record, whatever page shows it.
    void ConvertText(std::string (*convert)(std::string_view));
    QString TemplateFileText() const;

    std::unique_ptr<Ui::PageDescription> m_ui;
    IPTCClipboard* m_clipboard;
};

}  // namespace vliptc::editors
