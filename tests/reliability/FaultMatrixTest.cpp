// Every writer of the library under the fault seam. For each writer the calls
// of each file-system step are counted on a clean write, then each call is
// made to fail in turn, every time on a fresh copy of the user's files (real
// files of the public corpus, or files the library wrote itself). The table
// of each writer says, per step and call, what the writer returns and what
// stays in the folder; the README's "Fault injection" table is these tables
// in words. A writer that starts taking a step its table does not list fails
// the test, so the two cannot drift apart.

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "exif/EXIF.h"
#include "iptc/IPTC.h"
#include "iptc/internal/Containers.h"
#include "platform/FaultInjection.h"
#include "tags/IPTCINI.h"
#include "tests/iptc/StoreFixture.h"
#include "tests/support/Corpus.h"
#include "tests/support/TempDir.h"

namespace vliptc::test {
namespace {

namespace fault = platform::fault;
using fault::Step;

constexpr std::array<Step, 7> kSteps{Step::Create, Step::Write, Step::Rename, Step::Remove,
                                     Step::Resize, Step::Map,   Step::Time};
constexpr std::array<const char*, 7> kStepNames{"create", "write", "rename", "remove",
                                                "resize", "map",   "time"};

// The two writers that answer with a bool, as numbers beside the others' codes.
constexpr int kSaved = 1;
constexpr int kNotSaved = 0;

// What a run leaves in the folder, against snapshots of the folder before the
// run and after a run without faults.
enum class Remains {
    kOld,           // the folder as it was: the original bytes at the path, nothing beside
    kOldNoBackup,   // the original at the path; the older ".bak" backup deleted
    kNew,           // the folder as after a write without faults
    kNewAndBackup,  // that, plus the numbered backup ".000" of the file as the swap found it
    kTrailerOnly,   // the trailer holds the new block, the rest of the file is old
};

// Calls first..last of step fail (one per run) with result and remains.
struct Row {
    Step step;
    int first;
    int last;
    int result;
    Remains remains;
};

using Write = std::function<int()>;

struct Scenario {
    const char* name;
    const char* file;    // the user's file in the folder
    const char* backup;  // the ".bak" that kOldNoBackup loses
    bool corpus;         // made from a corpus file
    bool trailerFirst;   // the trailer is written in place before the container is swapped
    int success;         // the result of the write without faults
    // Makes the user's files in folder (file among them) and the write to
    // run on them.
    std::function<void(const std::string& folder, const std::string& file, Write& write)> arrange;
    std::vector<Row> rows;
};

const std::string kDefinitions = Definitions({{25, "Keywords"}, {120, "Caption"}});

// A store that has read its copy of a corpus file and had edit applied; the
// write puts the record back with the format it was read with. With trailer,
// the library first gives the copy a trailer chunk of its own and the record
// is read back from there.
void ArrangeIptc(const std::string& folder, const std::string& file, const char* corpusFile, bool trailer,
                 void (*edit)(CIPTC&), Write& write) {
    const std::string path = folder + file;
    WriteFile(path, ReadFile(kCorpus + corpusFile));
    auto store = std::make_shared<CIPTC>();
    ASSERT_EQ(store->InitializeFromText(kDefinitions, folder), CIPTC::kSuccess);
    CIPTC::SIPTCFormatInfo format;
    ASSERT_EQ(store->ReadIPTCBlob(path.c_str(), format), CIPTC::kSuccess);
    if (trailer) {
        ASSERT_EQ(store->WriteIPTCBlob(path.c_str(), {CIPTC::kFormatTrailer, false}), CIPTC::kSuccess);
        ASSERT_EQ(store->ReadIPTCBlob(path.c_str(), format), CIPTC::kSuccess);
        ASSERT_EQ(format.nFormat, CIPTC::kFormatTrailer);
    }
    edit(*store);
    write = [store, path, format] { return static_cast<int>(store->WriteIPTCBlob(path.c_str(), format)); };
}

void AddKeyword(CIPTC& store) { store.SetField(25, CVLProperty(std::string("fault matrix")), false); }

// Too long for the room the old record or chunk has: the file must grow.
void LongCaption(CIPTC& store) { store.SetField(120, CVLProperty(std::string(2000, 'c')), true); }

// Much shorter than the record the file has: rewritten in place.
void OneKeyword(CIPTC& store) { store.Fields() = {{25, {CVLProperty(std::string("sea"))}}}; }

void ArrangeExifDates(const std::string& folder, const std::string& file, Write& write) {
    const std::string path = folder + file;
    WriteFile(path, ReadFile(kCorpus + "jpeg/ian_Canon_40D.jpg"));
    auto exif = std::make_shared<CVLEXIF>();
    ASSERT_EQ(exif->LoadFile(path.c_str()), CVLEXIF::errOK);
    for (const auto tag : {CVLEXIF::kDateTime, CVLEXIF::kDateTimeOriginal, CVLEXIF::kDateTimeDigitized}) {
        CVLEXIF::SField* field = nullptr;
        ASSERT_TRUE(exif->GetField(tag, field));
        field->vValues = {CVLProperty(std::string("1999:12:31 23:59:59"))};
    }
    write = [exif, path] { return static_cast<int>(exif->StoreFile(path.c_str())); };
}

// A user folder whose lists the library saved twice (the data file and its
// backup), loaded and changed again.
void ArrangeUserLists(const std::string& folder, const std::string&, Write& write) {
    WriteFile(folder + "vliptctags.ipt", kDefinitions);
    auto ini = std::make_shared<CVLIPTCINI>();
    for (const char* word : {"older", "previous"}) {
        ASSERT_TRUE(ini->Load(folder, folder));
        ASSERT_TRUE(ini->SetUserList(25, {CVLProperty(std::string(word))}));
        ASSERT_TRUE(ini->StoreUserLists());
    }
    ASSERT_TRUE(ini->Load(folder, folder));
    ASSERT_TRUE(ini->SetUserList(25, {CVLProperty(std::string("new"))}));
    write = [ini] { return ini->StoreUserLists() ? kSaved : kNotSaved; };
}

// A template file the library saved twice (the file and its backup), and a
// third template to store.
void ArrangeTemplates(const std::string& folder, const std::string&, Write& write) {
    auto store = std::make_shared<CIPTC>();
    ASSERT_EQ(store->InitializeFromText(kDefinitions, folder), CIPTC::kSuccess);
    for (const char* name : {"older", "previous"}) {
        store->SetField(120, CVLProperty(std::string(name)), true);
        ASSERT_TRUE(store->StoreTemplate(name));
    }
    store->SetField(120, CVLProperty(std::string("new")), true);
    write = [store] { return store->StoreTemplate("new") ? kSaved : kNotSaved; };
}

// The writers that build the new file beside the old one and swap it in
// with a numbered backup. A Photoshop document is opened read-write (for the
// in-place path), which the seam can fail on its own.
std::vector<Row> SwapRows(bool openedReadWrite) {
    std::vector<Row> rows{{Step::Time, 1, 1, CIPTC::kCannotOpen, Remains::kOld}};
    if (openedReadWrite) rows.push_back({Step::Map, 1, 1, CIPTC::kCannotOpen, Remains::kOld});
    const int map = openedReadWrite ? 2 : 1;
    rows.insert(rows.end(), {{Step::Map, map, map, CIPTC::kCannotMapOrWrite, Remains::kOld},
                             {Step::Create, 1, 1, CIPTC::kCannotMapOrWrite, Remains::kOld},
                             {Step::Write, 1, 1, CIPTC::kCannotMapOrWrite, Remains::kOld},
                             {Step::Rename, 1, 2, CIPTC::kCannotReplace, Remains::kOld},
                             {Step::Remove, 1, 1, CIPTC::kSuccess, Remains::kNewAndBackup}});
    return rows;
}

// The TIFF writer maps its new file too (read-only), to check the new
// directories before the swap.
std::vector<Row> TiffRows() {
    std::vector<Row> rows = SwapRows(false);
    rows.push_back({Step::Map, 2, 2, CIPTC::kCannotMapOrWrite, Remains::kOld});
    return rows;
}

std::vector<Scenario> Scenarios() {
    const auto iptc = [](const char* corpusFile, bool trailer, void (*edit)(CIPTC&)) {
        return [=](const std::string& folder, const std::string& file, Write& write) {
            ArrangeIptc(folder, file, corpusFile, trailer, edit, write);
        };
    };
    return {
        {"Jpeg", "photo.jpg", nullptr, true, false, CIPTC::kSuccess,
         iptc("jpeg/et_IPTC.jpg", false, AddKeyword), SwapRows(false)},
        {"Tiff", "image.tif", nullptr, true, false, CIPTC::kSuccess,
         iptc("tiff/et_ExifTool.tif", false, AddKeyword), TiffRows()},
        {"PsdRebuilt", "layers.psd", nullptr, true, false, CIPTC::kSuccess,
         iptc("psd/et_Photoshop.psd", false, LongCaption), SwapRows(true)},
        {"PsdInPlace",
         "layers.psd",
         nullptr,
         true,
         false,
         CIPTC::kSuccess,
         iptc("psd/et_Photoshop.psd", false, OneKeyword),
         {{Step::Map, 1, 1, CIPTC::kCannotOpen, Remains::kOld},
          {Step::Map, 2, 2, CIPTC::kCannotMapOrWrite, Remains::kOld},
          {Step::Time, 1, 1, CIPTC::kCannotOpen, Remains::kOld}}},
        // The trailer grows in place (map, resize, map again), then the JPEG
        // is rebuilt around it and swapped in.
        {"TrailerThenJpeg",
         "catalogued.jpg",
         nullptr,
         true,
         true,
         CIPTC::kSuccess,
         iptc("jpeg/et_IPTC.jpg", true, LongCaption),
         {{Step::Time, 1, 1, CIPTC::kCannotOpen, Remains::kOld},
          {Step::Map, 1, 1, CIPTC::kCannotOpen, Remains::kOld},
          {Step::Map, 2, 4, CIPTC::kCannotMapOrWrite, Remains::kOld},
          {Step::Resize, 1, 1, CIPTC::kCannotMapOrWrite, Remains::kOld},
          {Step::Map, 5, 5, CIPTC::kCannotMapOrWrite, Remains::kTrailerOnly},
          {Step::Create, 1, 1, CIPTC::kCannotMapOrWrite, Remains::kTrailerOnly},
          {Step::Write, 1, 1, CIPTC::kCannotMapOrWrite, Remains::kTrailerOnly},
          {Step::Rename, 1, 2, CIPTC::kCannotReplace, Remains::kTrailerOnly},
          {Step::Remove, 1, 1, CIPTC::kSuccess, Remains::kNewAndBackup}}},
        {"ExifDates",
         "dated.jpg",
         nullptr,
         true,
         false,
         CVLEXIF::errOK,
         ArrangeExifDates,
         {{Step::Map, 1, 1, CVLEXIF::errOpen, Remains::kOld},
          {Step::Map, 2, 2, CVLEXIF::errMap, Remains::kOld}}},
        {"UserLists",
         "vliptcusr.dat",
         "vliptcusr.dat.bak",
         false,
         false,
         kSaved,
         ArrangeUserLists,
         {{Step::Remove, 1, 1, kNotSaved, Remains::kOld},
          {Step::Rename, 1, 1, kNotSaved, Remains::kOldNoBackup},
          {Step::Create, 1, 1, kSaved, Remains::kOldNoBackup},
          {Step::Write, 1, 1, kSaved, Remains::kOldNoBackup},
          {Step::Rename, 2, 2, kSaved, Remains::kOldNoBackup},
          {Step::Time, 1, 1, kSaved, Remains::kNew}}},
        {"Templates",
         "vliptctmpl.dat",
         "vliptctmpl.dat.bak",
         false,
         false,
         kSaved,
         ArrangeTemplates,
         {{Step::Create, 1, 1, kNotSaved, Remains::kOld},
          {Step::Write, 1, 1, kNotSaved, Remains::kOld},
          {Step::Remove, 1, 1, kNotSaved, Remains::kOld},
          {Step::Rename, 1, 2, kNotSaved, Remains::kOldNoBackup}}},
    };
}

// ---- Snapshots of the folder -----------------------------------------------

using Folder = std::map<std::string, std::string>;  // relative path -> bytes

Folder Snapshot(const std::string& root) {
    Folder files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
        if (entry.is_regular_file()) {
            files[std::filesystem::relative(entry.path(), root).string()] = ReadFile(entry.path().string());
        }
    }
    return files;
}

// The library's trailer chunk starts with a 10-byte header in front of the
// data the reader locates.
std::size_t TrailerChunkStart(const std::string& file) {
    const auto located =
        iptc::LocateInTrailer(std::span(reinterpret_cast<const std::uint8_t*>(file.data()), file.size()));
    EXPECT_EQ(located.error, CIPTC::kSuccess);
    return located.candidates.empty() ? 0 : static_cast<std::size_t>(located.candidates.front().offset) - 10;
}

// The old file with the new file's trailer chunk in place of its own.
std::string TrailerOnly(const std::string& old, const std::string& written) {
    return old.substr(0, TrailerChunkStart(old)) + written.substr(TrailerChunkStart(written));
}

Folder Expected(const Scenario& s, Remains remains, const Folder& before, const Folder& clean) {
    Folder expected = before;
    switch (remains) {
        case Remains::kOld:
            break;
        case Remains::kOldNoBackup:
            expected.erase(s.backup);
            break;
        case Remains::kNew:
            expected = clean;
            break;
        case Remains::kNewAndBackup:
            expected = clean;
            expected[std::string(s.file) + ".000"] =
                s.trailerFirst ? TrailerOnly(before.at(s.file), clean.at(s.file)) : before.at(s.file);
            break;
        case Remains::kTrailerOnly:
            expected[s.file] = TrailerOnly(before.at(s.file), clean.at(s.file));
            break;
    }
    return expected;
}

// The names of the files that are missing, extra or different.
std::string Differences(const Folder& actual, const Folder& expected) {
    std::string names;
    for (const auto& [name, bytes] : expected) {
        const auto it = actual.find(name);
        if (it == actual.end())
            names += " missing " + name;
        else if (it->second != bytes)
            names += " different " + name;
    }
    for (const auto& [name, bytes] : actual) {
        if (!expected.contains(name)) names += " extra " + name;
    }
    return names;
}

// ---- The matrix ---------------------------------------------------------------

class FaultMatrix : public ::testing::TestWithParam<Scenario> {
protected:
    // One run in a fresh folder, with call n of step failing (n = 0: none).
    // Returns the result and the folder before and after.
    int Run(Step step, int n, Folder& before, Folder& after) {
        TempDir dir;
        Write write;
        GetParam().arrange(dir.Path(), GetParam().file, write);
        if (::testing::Test::HasFatalFailure() || !write) return -1;
        before = Snapshot(dir.Path());
        const fault::ScopedReset reset;
        if (n > 0) {
            fault::FailNth(step, n);
        } else {
            fault::StartCounting();
        }
        const int result = write();
        for (std::size_t i = 0; i < kSteps.size(); ++i) m_calls[i] = fault::Calls(kSteps[i]);
        after = Snapshot(dir.Path());
        return result;
    }

    std::array<int, kSteps.size()> m_calls{};
};

TEST_P(FaultMatrix, EachFailingCallLeavesWhatTheTableSays) {
    const Scenario& s = GetParam();
    if (s.corpus) VLIPTC_SKIP_WITHOUT_CORPUS();

    Folder before;
    Folder clean;
    ASSERT_EQ(Run(Step::Create, 0, before, clean), s.success);
    ASSERT_NE(clean, before);

    // The table lists every call of every step the clean write took, each once.
    for (std::size_t i = 0; i < kSteps.size(); ++i) {
        int covered = 0;
        for (const Row& row : s.rows) {
            if (row.step != kSteps[i]) continue;
            EXPECT_EQ(row.first, covered + 1) << kStepNames[i];
            covered = row.last;
        }
        EXPECT_EQ(m_calls[i], covered) << kStepNames[i] << ": calls taken, calls the table lists";
    }

    for (const Row& row : s.rows) {
        for (int n = row.first; n <= row.last; ++n) {
            SCOPED_TRACE(std::string(kStepNames[static_cast<std::size_t>(row.step)]) + " #" +
                         std::to_string(n));
            Folder after;
            EXPECT_EQ(Run(row.step, n, before, after), row.result);
            EXPECT_EQ(Differences(after, Expected(s, row.remains, before, clean)), "");
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Writers, FaultMatrix, ::testing::ValuesIn(Scenarios()),
                         [](const ::testing::TestParamInfo<Scenario>& info) { return info.param.name; });

}  // namespace
}  // namespace vliptc::test
