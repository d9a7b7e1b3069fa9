#pragma once

// What the pages of the IPTC property sheet share: the store they edit, the
// host engine, the files of the batch, the profile, the write and keyword
// modes, and the way a page puts a question to the user.

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "editors/EditorUI.h"

class CIPTC;
class CVLEngine;

namespace vliptc::editors {

class Profile;

// A message box with the text of string stringId (already formatted as text);
// returns the button pressed. The sheet's own puts up a QMessageBox; tests
// answer from a script.
using AskUserFunction = std::function<Answer(unsigned stringId, const std::string& text, Buttons, Icon)>;

struct SheetContext {
    CIPTC& store;
    CVLEngine* engine;
    std::vector<std::uint32_t> validFiles;
    std::uint32_t templateId;
    Profile& profile;
    AskUserFunction ask;
    // As the sheet opened with them; the options page writes them back when
    // it is left and on OK.
    EditModes modes;
};

}  // namespace vliptc::editors
