// vliptc: the command-line face of the library. Command groups live in their
// own sources; this file holds the global options, the parse, and the mapping
// of failures to exit statuses:
//   0  done
//   1  a file failed (the others were processed), or a save failed
//   2  usage error (unknown command, option or field, a bad value): nothing
//      was written

#include <cstdio>
#include <exception>

#include <CLI/CLI.hpp>

#include "apps/vliptc/Commands.h"

int main(int argc, char** argv) {
    using namespace vliptc::cli;
    Cli cli;
    CLI::App app("Show and edit the IPTC fields of image files (JPEG, TIFF, Photoshop).", "vliptc");
    app.set_version_flag("--version", VLIPTC_VERSION);
    // Global options may also stand after the command: "vliptc iptc show --user DIR F".
    app.fallthrough();
    app.add_option("--defs", cli.global.defsFolder,
                   "Folder holding vliptctags.ipt (default: the definitions built into vliptc)")
        ->type_name("DIR");
    app.add_option("--user", cli.global.userFolder,
                   "Folder of user lists, synonyms and templates (default: $XDG_CONFIG_HOME/vliptc, "
                   "else ~/.config/vliptc)")
        ->type_name("DIR");
    app.add_option("--jobs,-j", cli.global.jobs, "Files processed at once (default: one per core)")
        ->type_name("N")
        ->check(CLI::Range(1u, 1024u));

    AddIptcCommands(app, cli);
    AddClipboardCommands(*app.get_subcommand("iptc"), cli);
    AddApplyCommand(*app.get_subcommand("iptc"), cli);
    AddExifCommands(app, cli);
    AddTemplateCommands(app, cli);
    AddListCommands(app, cli);
    app.require_subcommand(1);

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        // Help and version exit 0; every parse error is a usage error.
        if (error.get_exit_code() == 0) return app.exit(error);
        std::fprintf(stderr, "vliptc: %s\nRun \"vliptc --help\" for the commands.\n", error.what());
        return kExitUsage;
    }

    try {
        return cli.action ? cli.action() : kExitUsage;
    } catch (const UsageError& error) {
        std::fprintf(stderr, "vliptc: %s\n", error.what());
        return kExitUsage;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "vliptc: %s\n", error.what());
        return kExitFailed;
    }
}
