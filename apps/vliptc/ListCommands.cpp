// vliptc lists show | add | remove and vliptc synonyms show | add | remove:
// the user lists and keyword synonyms of the user folder ("vliptcusr.dat"),
// through the library.

#include <algorithm>
#include <cstdio>
#include <memory>

#include "apps/vliptc/Commands.h"
#include "apps/vliptc/Fields.h"

namespace vliptc::cli {

namespace {

constexpr std::uint32_t kKeywords = CVLIPTCINI::kKeywordsID;

// "vliptcusr.dat" keeps one value per line in quotes, trimmed of blanks at
// both ends when read: a value is trimmed the same way before it is stored,
// and quotes and line breaks, which the file cannot carry, are refused.
CVLProperty ListValue(CIPTC& store, const FieldNames& names, std::uint32_t id, std::string_view text) {
    const auto first = text.find_first_not_of(" \t");
    text = first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(" \t") - first + 1);
    if (text.empty()) throw UsageError("empty value for " + names.Name(id));
    if (text.find_first_of("\"\r\n") != std::string_view::npos) {
        throw UsageError("a list value cannot hold quotes or line breaks: \"" + std::string(text) + "\"");
    }
    return CheckedValue(store, names, id, text);
}

bool Holds(const std::vector<CVLProperty>& values, const CVLProperty& value) {
    return std::find(values.begin(), values.end(), value) != values.end();
}

void PrintValues(const std::vector<CVLProperty>& values) {
    for (const auto& value : values) std::puts(ToUtf8(value.String()).c_str());
}

// ---------------------------------------------------------------------------
// lists

struct ListOptions {
    std::string field;
    std::string value;
};

int RunListShow(const GlobalOptions& global, const ListOptions& options) {
    CIPTC store;
    InitializeStore(store, global);
    std::vector<CVLProperty> values;
    static_cast<void>(store.GetUserList(FieldNames(store).Resolve(options.field), values));
    PrintValues(values);
    return kExitOk;
}

// Adding a value the list holds already changes nothing and saves nothing.
int RunListAdd(const GlobalOptions& global, const ListOptions& options) {
    CIPTC store;
    InitializeStore(store, global);
    const FieldNames names(store);
    const std::uint32_t id = names.Resolve(options.field);
    const CVLProperty value = ListValue(store, names, id, options.value);
    std::vector<CVLProperty> values;
    static_cast<void>(store.GetUserList(id, values));
    if (Holds(values, value)) return kExitOk;
    values.push_back(value);
    store.SetUserList(id, values);
    SaveChecked(store, global, [&](const CIPTC& saved) {
        std::vector<CVLProperty> read;
        return saved.GetUserList(id, read) && read == values;
    });
    return kExitOk;
}

int RunListRemove(const GlobalOptions& global, const ListOptions& options) {
    CIPTC store;
    InitializeStore(store, global);
    const FieldNames names(store);
    const std::uint32_t id = names.Resolve(options.field);
    const CVLProperty value(ToStored(options.value, "the value"));
    std::vector<CVLProperty> values;
    static_cast<void>(store.GetUserList(id, values));
    if (!Holds(values, value)) {
        throw UsageError("\"" + options.value + "\" is not in the user list of " + names.Name(id));
    }
    std::erase(values, value);
    store.SetUserList(id, values);
    SaveChecked(store, global, [&](const CIPTC& saved) {
        std::vector<CVLProperty> read;
        static_cast<void>(saved.GetUserList(id, read));
        return read == values;
    });
    return kExitOk;
}

// ---------------------------------------------------------------------------
// synonyms (of the keywords)

struct SynonymOptions {
    std::string keyword;
    std::vector<std::string> synonyms;
};

// The synonym list as the file keeps it: keywords without synonyms are not
// written, so they do not count.
CVLIPTCINI::SynonymList Saved(const CVLIPTCINI::SynonymList& list) {
    CVLIPTCINI::SynonymList out;
    for (const auto& [keyword, synonyms] : list) {
        if (!synonyms.empty()) out.emplace(keyword, synonyms);
    }
    return out;
}

void SaveSynonyms(CIPTC& store, const GlobalOptions& global, const CVLIPTCINI::SynonymList& list) {
    store.SetSynonymList(kKeywords, list);
    SaveChecked(store, global, [&](const CIPTC& saved) {
        CVLIPTCINI::SynonymList read;
        static_cast<void>(saved.GetSynonymList(kKeywords, read));
        return Saved(read) == Saved(list);
    });
}

int RunSynonymShow(const GlobalOptions& global) {
    CIPTC store;
    InitializeStore(store, global);
    CVLIPTCINI::SynonymList list;
    static_cast<void>(store.GetSynonymList(kKeywords, list));
    for (const auto& [keyword, synonyms] : list) {
        if (synonyms.empty()) continue;
        std::string line = ToUtf8(keyword.String()) + "\t";
        for (std::size_t i = 0; i < synonyms.size(); ++i) {
            line += (i > 0 ? "; " : "") + ToUtf8(synonyms[i].String());
        }
        std::puts(line.c_str());
    }
    return kExitOk;
}

int RunSynonymAdd(const GlobalOptions& global, const SynonymOptions& options) {
    CIPTC store;
    InitializeStore(store, global);
    const FieldNames names(store);
    const CVLProperty keyword = ListValue(store, names, kKeywords, options.keyword);
    CVLIPTCINI::SynonymList list;
    static_cast<void>(store.GetSynonymList(kKeywords, list));
    auto& synonyms = list[keyword];
    const std::size_t before = synonyms.size();
    for (const auto& text : options.synonyms) {
        const CVLProperty synonym = ListValue(store, names, kKeywords, text);
        if (synonym != keyword && !Holds(synonyms, synonym)) synonyms.push_back(synonym);
    }
    if (synonyms.size() == before) return kExitOk;
    SaveSynonyms(store, global, list);
    return kExitOk;
}

// Without synonyms the keyword's whole entry goes.
int RunSynonymRemove(const GlobalOptions& global, const SynonymOptions& options) {
    CIPTC store;
    InitializeStore(store, global);
    CVLIPTCINI::SynonymList list;
    static_cast<void>(store.GetSynonymList(kKeywords, list));
    const auto entry = list.find(CVLProperty(ToStored(options.keyword, "the keyword")));
    if (entry == list.end() || entry->second.empty()) {
        throw UsageError("no synonyms for \"" + options.keyword + "\"");
    }
    if (options.synonyms.empty()) {
        list.erase(entry);
    } else {
        for (const auto& text : options.synonyms) {
            const CVLProperty synonym(ToStored(text, "the synonym"));
            if (!Holds(entry->second, synonym)) {
                throw UsageError("\"" + text + "\" is not a synonym of \"" + options.keyword + "\"");
            }
            std::erase(entry->second, synonym);
        }
    }
    SaveSynonyms(store, global, list);
    return kExitOk;
}

}  // namespace

void AddListCommands(CLI::App& app, Cli& cli) {
    CLI::App* lists = app.add_subcommand("lists", "User lists: the values offered for a field");
    lists->require_subcommand(1);
    auto list = std::make_shared<ListOptions>();
    const char* fieldHelp = "Dataset number or field name";

    CLI::App* show = lists->add_subcommand("show", "Print the user list of a field, one value per line");
    show->add_option("id", list->field, fieldHelp)->required();
    show->callback([&cli, list] { cli.action = [&cli, list] { return RunListShow(cli.global, *list); }; });

    CLI::App* add = lists->add_subcommand("add", "Add a value to the user list of a field");
    add->add_option("id", list->field, fieldHelp)->required();
    add->add_option("value", list->value, "Value")->required();
    add->callback([&cli, list] { cli.action = [&cli, list] { return RunListAdd(cli.global, *list); }; });

    CLI::App* remove = lists->add_subcommand("remove", "Remove a value from the user list of a field");
    remove->add_option("id", list->field, fieldHelp)->required();
    remove->add_option("value", list->value, "Value")->required();
    remove->callback(
        [&cli, list] { cli.action = [&cli, list] { return RunListRemove(cli.global, *list); }; });

    CLI::App* synonyms = app.add_subcommand("synonyms", "Keyword synonyms: words added with a keyword");
    synonyms->require_subcommand(1);
    auto synonym = std::make_shared<SynonymOptions>();

    synonyms->add_subcommand("show", "Print every keyword with its synonyms")->callback([&cli] {
        cli.action = [&cli] { return RunSynonymShow(cli.global); };
    });

    CLI::App* synonymAdd = synonyms->add_subcommand("add", "Add synonyms to a keyword");
    synonymAdd->add_option("keyword", synonym->keyword, "Keyword")->required();
    synonymAdd->add_option("synonyms", synonym->synonyms, "Synonyms")->required();
    synonymAdd->callback(
        [&cli, synonym] { cli.action = [&cli, synonym] { return RunSynonymAdd(cli.global, *synonym); }; });

    CLI::App* synonymRemove =
        synonyms->add_subcommand("remove", "Remove synonyms of a keyword, or all of them");
    synonymRemove->add_option("keyword", synonym->keyword, "Keyword")->required();
    synonymRemove->add_option("synonyms", synonym->synonyms, "Synonyms (none: the keyword's whole entry)");
    synonymRemove->callback(
        [&cli, synonym] { cli.action = [&cli, synonym] { return RunSynonymRemove(cli.global, *synonym); }; });
}

}  // namespace vliptc::cli
