// vliptc templates list | show | store | delete: the saved templates of the
// user folder ("vliptctmpl.dat"), through the library.

#include <algorithm>
#include <cstdio>
#include <memory>

#include "apps/vliptc/Commands.h"
#include "apps/vliptc/Fields.h"
#include "apps/vliptc/Output.h"

namespace vliptc::cli {

namespace {

struct TemplateOptions {
    std::string name;
    std::string from;
};

bool HasTemplate(const CIPTC& store, const std::string& storedName) {
    const auto& templates = store.Templates();
    return std::any_of(templates.begin(), templates.end(),
                       [&](const CIPTC::STemplate& t) { return t.strName == storedName; });
}

const CIPTC::STemplate& FindTemplate(const CIPTC& store, const std::string& name) {
    const std::string stored = ToStored(name, "the template name");
    for (const auto& candidate : store.Templates()) {
        if (candidate.strName == stored) return candidate;
    }
    throw UsageError("no template named \"" + name + "\"");
}

int RunList(const GlobalOptions& global) {
    CIPTC store;
    InitializeStore(store, global);
    for (const auto& stored : store.Templates()) std::puts(ToUtf8(stored.strName).c_str());
    return kExitOk;
}

int RunShow(const GlobalOptions& global, const TemplateOptions& options) {
    CIPTC store;
    InitializeStore(store, global);
    const FieldNames names(store);
    std::fputs(FieldLines(names, FindTemplate(store, options.name).vFields).c_str(), stdout);
    return kExitOk;
}

// The whole field list of the file becomes the template; a template of the
// same name is replaced.
int RunStore(const GlobalOptions& global, const TemplateOptions& options) {
    CIPTC store;
    InitializeStore(store, global);
    const std::string name = ToStored(options.name, "the template name");
    if (name.empty()) throw UsageError("a template needs a name");
    if (!ReadOneFile(store, options.from)) return kExitFailed;
    EnsureUserFolder(global);
    if (!store.StoreTemplate(name)) {
        throw CommandError("cannot write the templates to " + store.TemplatePath());
    }
    SaveChecked(store, global, [&](const CIPTC& saved) { return HasTemplate(saved, name); });
    return kExitOk;
}

int RunDelete(const GlobalOptions& global, const TemplateOptions& options) {
    CIPTC store;
    InitializeStore(store, global);
    const std::string name = FindTemplate(store, options.name).strName;
    static_cast<void>(store.DeleteTemplate(name));
    SaveChecked(store, global, [&](const CIPTC& saved) { return !HasTemplate(saved, name); });
    return kExitOk;
}

}  // namespace

void AddTemplateCommands(CLI::App& app, Cli& cli) {
    CLI::App* group = app.add_subcommand("templates", "Saved templates: named sets of IPTC fields");
    group->require_subcommand(1);
    auto options = std::make_shared<TemplateOptions>();

    group->add_subcommand("list", "Print the names of the templates")->callback([&cli] {
        cli.action = [&cli] { return RunList(cli.global); };
    });

    CLI::App* show = group->add_subcommand("show", "Print the fields of a template");
    show->add_option("name", options->name, "Template name")->required();
    show->callback(
        [&cli, options] { cli.action = [&cli, options] { return RunShow(cli.global, *options); }; });

    CLI::App* store = group->add_subcommand("store", "Save the IPTC fields of a file as a template");
    store->add_option("name", options->name, "Template name (an existing template is replaced)")->required();
    store->add_option("--from", options->from, "Image file whose fields are taken")->required();
    store->callback(
        [&cli, options] { cli.action = [&cli, options] { return RunStore(cli.global, *options); }; });

    CLI::App* remove = group->add_subcommand("delete", "Delete a template");
    remove->add_option("name", options->name, "Template name")->required();
    remove->callback(
        [&cli, options] { cli.action = [&cli, options] { return RunDelete(cli.global, *options); }; });
}

}  // namespace vliptc::cli
