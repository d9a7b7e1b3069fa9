#pragma once

// "Other Fields and Options": a table of the fields that the tag definitions
// mark as outside the IPTC standard, one row per field in definition order
// with its value editable as text; and the write mode and keyword mode of the
// batch edit. Dates and times outside the standard are set in the date
// editor, opened on their cell (double-click or Enter); Del empties the cell.

#include <cstdint>
#include <memory>
#include <vector>

#include "editors/sheet/PageBase.h"

class QButtonGroup;

namespace Ui {
class PageOtherFields;
}

namespace vliptc::editors {

class CPPIPTCExtended : public CPPIPTCBase {
    Q_OBJECT

public:
    explicit CPPIPTCExtended(SheetContext& context, QWidget* parent = nullptr);
    ~CPPIPTCExtended() override;

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void ExchangeControls(Direction direction) override;
    void FillTable();
    void EditDateTime(int row);

    struct Row {
        std::uint32_t id;
        std::uint32_t type;  // CVLIPTCINI::ETagType
    };

    std::unique_ptr<Ui::PageOtherFields> m_ui;
    QButtonGroup* m_writeModes;
    std::vector<Row> m_rows;  // the field of each table row
};

}  // namespace vliptc::editors
