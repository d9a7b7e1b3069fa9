#include "editors/sheet/UserListChoices.h"

#include <vector>

#include <QComboBox>
#include <QListView>
#include <QStringListModel>

#include "editors/internal/StoreText.h"
#include "iptc/IPTC.h"

namespace vliptc::editors {

namespace {

// Wide enough for a typical entry; longer ones show in full in the popup.
constexpr int kComboContentsLength = 12;

}  // namespace

void OfferUserList(const CIPTC& store, std::uint32_t id, QComboBox& combo) {
    std::vector<CVLProperty> values;
    static_cast<void>(store.GetUserList(id, values));
    QStringList choices;
    choices.reserve(static_cast<qsizetype>(values.size()));
    for (const CVLProperty& value : values) choices.append(FromStoreText(value.String()));

    auto* model = qobject_cast<QStringListModel*>(combo.model());
    if (model == nullptr) {
        combo.setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
        combo.setMinimumContentsLength(kComboContentsLength);
        if (auto* view = qobject_cast<QListView*>(combo.view())) view->setUniformItemSizes(true);
        model = new QStringListModel(&combo);
        combo.setModel(model);
    }
    const QString text = combo.currentText();
    model->setStringList(choices);
    combo.setCurrentIndex(-1);
    combo.setEditText(text);
}

}  // namespace vliptc::editors
