#pragma once

// "Image Information": category, supplemental categories and keywords (the
// last two as lists), edit status, priority, object cycle, originating
// program, fixture identifier, city, province or state, country code and
// country, original transmission reference, and the created and release
// dates and times.

#include <memory>

#include "editors/sheet/PageBase.h"

namespace Ui {
class PageImageInformation;
}

namespace vliptc::editors {

class DateTimeField;
class ListFieldControl;

class CPPIPTCKeywords : public CPPIPTCBase {
    Q_OBJECT

public:
    explicit CPPIPTCKeywords(SheetContext& context, QWidget* parent = nullptr);
    ~CPPIPTCKeywords() override;

private:
    void ExchangeControls(Direction direction) override;

    std::unique_ptr<Ui::PageImageInformation> m_ui;
    ListFieldControl* m_categories;
    ListFieldControl* m_keywords;
    DateTimeField* m_created;
    DateTimeField* m_release;
};

}  // namespace vliptc::editors
