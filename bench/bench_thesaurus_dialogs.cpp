// Opening the keyword chooser, the thesaurus manager and the synonym editor
// on a thesaurus of 100,000 keywords (each with two synonyms), on the
// offscreen platform: construction, first show, and the events up to the
// moment the list can be used. Goal: each opens in well under a second.
#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include <QApplication>
#include <QSettings>

#include "bench/BenchFolder.h"
#include "editors/Settings.h"
#include "editors/dialogs/KeywordChooser.h"
#include "editors/dialogs/SynonymEditor.h"
#include "editors/dialogs/ThesaurusManager.h"
#include "iptc/IPTC.h"

namespace {

using namespace vliptc::editors;

constexpr int kEntries = 100'000;
constexpr std::uint32_t kKeywords = 25;

std::string Keyword(int n) { return "keyword " + std::to_string(n); }

// A store whose keyword list and synonyms hold kEntries keywords.
class Thesaurus {
public:
    Thesaurus() {
        if (store.InitializeFromText("{\nID 25\nNAME Keywords\n}\n", folder.Path()) != CIPTC::kSuccess) {
            throw std::runtime_error("the store did not start");
        }
        std::vector<CVLProperty> list;
        CVLIPTCINI::SynonymList synonyms;
        for (int i = 0; i < kEntries; ++i) {
            list.emplace_back(Keyword(i));
            synonyms[CVLProperty(Keyword(i))] = {CVLProperty(Keyword(i) + " a"),
                                                 CVLProperty(Keyword(i) + " b")};
        }
        store.SetUserList(kKeywords, list);
        store.SetSynonymList(kKeywords, synonyms);
    }

    vliptc::bench::BenchFolder folder;
    CIPTC store;
};

Thesaurus& Shared() {
    static Thesaurus thesaurus;
    return thesaurus;
}

// Shows the dialog and lets its first events through; the dialog is closed
// and destroyed outside the timing.
template <typename Dialog, typename Open>
void OpenRepeatedly(benchmark::State& state, Open open) {
    for (auto _ : state) {
        std::unique_ptr<Dialog> dialog = open();
        dialog->show();
        QCoreApplication::processEvents();
        state.PauseTiming();
        if constexpr (std::is_same_v<Dialog, SynonymEditor>) {
            if (!dialog->IsLoaded()) state.SkipWithError("the list was not read");
        }
        dialog.reset();
        QCoreApplication::processEvents();
        state.ResumeTiming();
    }
    state.counters["entries"] = kEntries;
}

void BM_OpenKeywordChooser(benchmark::State& state) {
    std::vector<ChooserEntry> entries;
    for (int i = 0; i < kEntries; ++i) entries.push_back({Keyword(i), i % 3 == 0});
    QSettings settings(QString::fromStdString(Shared().folder.File("profile.ini")), QSettings::IniFormat);
    Profile profile(settings);
    OpenRepeatedly<KeywordChooser>(state, [&] { return std::make_unique<KeywordChooser>(entries, profile); });
}
BENCHMARK(BM_OpenKeywordChooser)->Unit(benchmark::kMillisecond);

void BM_OpenThesaurusManager(benchmark::State& state) {
    OpenRepeatedly<ThesaurusManager>(
        state, [] { return std::make_unique<ThesaurusManager>(Shared().store, kKeywords); });
}
BENCHMARK(BM_OpenThesaurusManager)->Unit(benchmark::kMillisecond);

void BM_OpenSynonymEditor(benchmark::State& state) {
    OpenRepeatedly<SynonymEditor>(state,
                                  [] { return std::make_unique<SynonymEditor>(Shared().store, kKeywords); });
}
BENCHMARK(BM_OpenSynonymEditor)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
