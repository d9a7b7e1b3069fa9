#pragma once

// Everything the editor drivers show goes through EditorUI: message boxes by
// string number, the property sheet, the progress window, the wait cursor and
// the message drain, plus the two settings the IPTC driver keeps between
// runs. A Qt implementation shows real widgets; tests script the answers, so
// the drivers run headless.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

class CIPTC;
class CVLEXIF;
class CVLEngine;

namespace vliptc::editors {

enum class Buttons { kOk, kYesNo };
enum class Icon { kInformation, kQuestion, kExclamation, kError };
// The values of the Windows dialog results, so hosts that pass them on keep
// their meaning.
enum class Answer : int { kOk = 1, kCancel = 2, kYes = 6, kNo = 7 };

// The write mode and keyword mode of the IPTC batch edit (iptc/RecordMerge.h).
struct EditModes {
    int writeMode = 0;
    int keywordMode = 1;
};

// What the IPTC property sheet edits: the store (filled from the template
// file), for the files of the batch.
struct SheetRequest {
    CIPTC& store;
    CVLEngine* engine;
    const std::vector<std::uint32_t>& validFiles;
    std::uint32_t templateId;
    std::string caption;
};

// The progress window of a write pass: a text line, a bar and Cancel.
class ProgressWindow {
public:
    virtual ~ProgressWindow() = default;
    virtual void SetText(const std::string& text) = 0;
    virtual void SetPos(int position) = 0;
    // Whether Cancel was pressed; processes waiting messages first, so the
    // button can be clicked between files.
    virtual bool IsCancelled() = 0;
};

class EditorUI {
public:
    virtual ~EditorUI() = default;

    // A message box with the text of string stringId as the driver formatted
    // it (text); returns the button pressed.
    virtual Answer ShowMessage(unsigned stringId, const std::string& text, Buttons buttons, Icon icon) = 0;

    // Runs the IPTC property sheet modally, with no owner window, over
    // request.store. modes holds the modes the sheet opens with and receives
    // those it closed with, OK or not. True when it ended with OK. The driver
    // loads and saves the modes and the store's user lists and templates
    // around the call; the sheet only shows.
    virtual bool RunSheet(const SheetRequest& request, EditModes& modes) = 0;

    // Runs the EXIF dialog ("Velora EXIF Viewer") modally over exif: a row per
    // present field with its formatted text; the writable date fields can be
    // changed unless viewOnly (which also hides OK). True when it ended with
    // OK; the dates the user set are then in exif's catalogue.
    virtual bool RunExifDialog(CVLEXIF& exif, bool viewOnly) = 0;

    // Opens the progress window over the range [lower, upper].
    virtual std::unique_ptr<ProgressWindow> OpenProgress(const std::string& title, int lower, int upper) = 0;

    virtual void BeginWaitCursor() = 0;
    virtual void EndWaitCursor() = 0;

    // Processes the messages that are waiting, so the windows under a closed
    // dialog repaint before a long pass.
    virtual void DrainMessages() = 0;

    // The modes as stored ("Settings\IPTCEdit": "WriteMode", default 0, and
    // "KWMerge", default 1), unchecked; the driver drops values out of range.
    virtual EditModes LoadEditModes() = 0;
    virtual void SaveEditModes(const EditModes& modes) = 0;
};

}  // namespace vliptc::editors
