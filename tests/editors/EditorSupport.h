#pragma once

// The editors run headless: a UI whose answers are scripted and which
// writes down everything shown, on the reference engine over files in a
// temporary folder.

#include <gtest/gtest.h>

#include <deque>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "editors/EditorUI.h"
#include "editors/VLIPTCEditor.h"
#include "host/ReferenceEngine.h"
#include "tests/support/Corpus.h"
#include "tests/support/ExifTool.h"
#include "tests/support/TempDir.h"

namespace vliptc::test {

using editors::Answer;
using editors::Buttons;
using editors::EditModes;
using editors::Icon;
using editors::SheetRequest;

// Events: "msg 208 information", "ask 201 question yes", "sheet 2 of 3"
// (template id, valid files), "exif dialog edit" (or "view"), "drain", "progress 0..3", "text Processing
// PATH", "pos 0".
class ScriptedUI final : public editors::EditorUI {
public:
    std::vector<std::string> events;
    std::map<unsigned, std::string> texts;  // the text shown for each string number
    std::deque<Answer> answers;             // for the questions in turn; Yes once they run out
    // The sheet: edits the store and the modes; true for OK. Cancels by default.
    std::function<bool(const SheetRequest&, EditModes&)> sheet = [](const SheetRequest&, EditModes&) {
        return false;
    };
    // The EXIF dialog: edits the catalogue; true for OK. Cancels by default.
    std::function<bool(CVLEXIF&)> exifDialog = [](CVLEXIF&) { return false; };
    std::string progressTitle = "Velora IPTC Editor";  // the title the progress window must have
    int cancelAtPos = -1;  // Cancel is pressed after the progress window reached this position
    EditModes storedModes;
    std::optional<EditModes> savedModes;
    std::optional<EditModes> sheetOpenedWith;
    std::string caption;
    int waitDepth = 0;
    bool waitUnbalanced = false;

    Answer ShowMessage(unsigned id, const std::string& text, Buttons buttons, Icon icon) override {
        texts[id] = text;
        const std::string head = std::to_string(id) + " " + IconName(icon);
        if (buttons == Buttons::kOk) {
            events.push_back("msg " + head);
            return Answer::kOk;
        }
        const Answer answer = answers.empty() ? Answer::kYes : answers.front();
        if (!answers.empty()) answers.pop_front();
        events.push_back("ask " + head + (answer == Answer::kYes ? " yes" : " no"));
        return answer;
    }

    bool RunSheet(const SheetRequest& request, EditModes& modes) override {
        events.push_back("sheet " + std::to_string(request.templateId) + " of " +
                         std::to_string(request.validFiles.size()));
        caption = request.caption;
        sheetOpenedWith = modes;
        return sheet(request, modes);
    }

    bool RunExifDialog(CVLEXIF& exif, bool viewOnly) override {
        events.push_back(std::string("exif dialog") + (viewOnly ? " view" : " edit"));
        return exifDialog(exif);
    }

    std::unique_ptr<editors::ProgressWindow> OpenProgress(const std::string& title, int lower,
                                                          int upper) override {
        events.push_back("progress " + std::to_string(lower) + ".." + std::to_string(upper));
        EXPECT_EQ(title, progressTitle);
        return std::make_unique<Progress>(*this);
    }

    void BeginWaitCursor() override { ++waitDepth; }
    void EndWaitCursor() override { waitUnbalanced |= --waitDepth < 0; }
    void DrainMessages() override { events.push_back("drain"); }
    EditModes LoadEditModes() override { return storedModes; }
    void SaveEditModes(const EditModes& modes) override { savedModes = modes; }

private:
    class Progress final : public editors::ProgressWindow {
    public:
        explicit Progress(ScriptedUI& ui) : m_ui(ui) {}
        void SetText(const std::string& text) override { m_ui.events.push_back("text " + text); }
        void SetPos(int position) override {
            m_ui.events.push_back("pos " + std::to_string(position));
            m_pos = position;
        }
        bool IsCancelled() override { return m_pos >= 0 && m_pos == m_ui.cancelAtPos; }

    private:
        ScriptedUI& m_ui;
        int m_pos = -1;
    };

    static std::string IconName(Icon icon) {
        static const char* const kNames[] = {"information", "question", "exclamation", "error"};
        return kNames[static_cast<int>(icon)];
    }
};

// A small JPEG without IPTC data: start of image, a JFIF segment, a short
// scan, end of image.
inline std::string SmallJpeg() {
    using namespace std::string_literals;
    return "\xFF\xD8"s + "\xFF\xE0\x00\x10JFIF\x00\x01\x01\x00\x00\x01\x00\x01\x00\x00"s +
           "\xFF\xDA\x00\x02\x12\x34\xFF\x00\x56\xFF\xD9"s;
}

// Values of one field, as text.
using Values = std::vector<std::string>;

inline std::vector<CVLProperty> Props(const Values& values) {
    std::vector<CVLProperty> out;
    for (const auto& v : values) out.emplace_back(v);
    return out;
}

// The reference engine, with a refresh that the host refuses on demand.
struct TestEngine : CVLReferenceEngine {
    using CVLReferenceEngine::CVLReferenceEngine;
    std::uint32_t refusedRefresh = 0;  // this id's refresh fails with 10099
    std::uint32_t RefreshFile(std::uint32_t id) override {
        const std::uint32_t result = CVLReferenceEngine::RefreshFile(id);
        return id == refusedRefresh ? 10099 : result;
    }
};

class EditorTest : public ::testing::Test {
protected:
    TempDir dir;
    std::string user = dir.Path() + "user";
    TestEngine engine{dir.File("host.log")};
    ScriptedUI ui;
    std::unique_ptr<CVLIPTCEditor> editor;
    std::vector<std::uint32_t> changed;

    void SetUp() override {
        std::filesystem::create_directory(user);
        // Tests run from the repository root: the shipped definitions.
        editor = std::make_unique<CVLIPTCEditor>(&engine, "resources/", user, &ui);
    }

    std::string PathOf(std::uint32_t id) const { return *engine.PathOf(id); }

    // Catalogues a file of the temp folder with the given bytes.
    std::uint32_t Add(const std::string& name, const std::string& bytes) {
        WriteFile(dir.File(name), bytes);
        return engine.AddFile(dir.File(name));
    }
    // A small JPEG without IPTC data, or with the given fields.
    std::uint32_t AddJpeg(const std::string& name, const std::map<std::uint32_t, Values>& fields = {}) {
        const std::uint32_t id = Add(name, SmallJpeg());
        if (!fields.empty()) Seed(PathOf(id), fields);
        return id;
    }
    // A catalogued path with nothing there: it counts as read-only.
    std::uint32_t AddMissing(const std::string& name) { return engine.AddFile(dir.File(name)); }

    void Seed(const std::string& path, const std::map<std::uint32_t, Values>& fields) const {
        CIPTC store;
        ASSERT_EQ(store.Initialize("resources/", user), CIPTC::kSuccess);
        CIPTC::SIPTCFormatInfo format;
        const auto read = store.ReadIPTCBlob(path.c_str(), format);
        ASSERT_TRUE(read == CIPTC::kSuccess || read == CIPTC::kNoIPTCBlock) << read;
        for (const auto& [id, values] : fields) store.SetField(id, Props(values));
        ASSERT_EQ(store.WriteIPTCBlob(path.c_str(), format), CIPTC::kSuccess);
    }

    // The record-2 datasets of a file as the library reads them back.
    Datasets Read(const std::string& path) const {
        CIPTC store;
        EXPECT_EQ(store.Initialize("resources/", user), CIPTC::kSuccess);
        CIPTC::SIPTCFormatInfo format;
        static_cast<void>(store.ReadIPTCBlob(path.c_str(), format));
        Datasets out = FromStore(store);
        out.erase(0);  // the record version, written by the library
        return out;
    }

    std::uint32_t Show(const std::vector<std::uint32_t>& ids, std::uint32_t templateId, int flags = 0) {
        return editor->ShowEditor(ids, templateId, changed, flags, nullptr);
    }

    // The host log without its times and line numbers: "LEVEL<TAB>SOURCE<TAB>TEXT".
    std::vector<std::string> LogLines() const {
        std::vector<std::string> out;
        const std::string text = ReadFile(dir.File("host.log"));
        std::size_t start = 0;
        for (std::size_t end; (end = text.find('\n', start)) != std::string::npos; start = end + 1) {
            const std::string line = text.substr(start, end - start);
            const std::size_t level = line.find('\t') + 1;
            const std::size_t source = line.find('\t', level) + 1;
            const std::size_t colon = line.find(':', source);
            const std::size_t message = line.find('\t', source) + 1;
            out.push_back(line.substr(level, source - level) + line.substr(source, colon - source) + '\t' +
                          line.substr(message));
        }
        return out;
    }
};

}  // namespace vliptc::test
