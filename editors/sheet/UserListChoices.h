#pragma once

// The choices an editable combo box offers for a field: the field's user list
// (its thesaurus). The list may hold a hundred thousand entries, so the combo
// box gets a plain string model and a view of uniform rows, and never measures
// every entry for its width.

#include <cstdint>

class CIPTC;
class QComboBox;

namespace vliptc::editors {

// Replaces the choices of combo with the user list of field id; the text in
// the combo box's edit stays as it was.
void OfferUserList(const CIPTC& store, std::uint32_t id, QComboBox& combo);

}  // namespace vliptc::editors
