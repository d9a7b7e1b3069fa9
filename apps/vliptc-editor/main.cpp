// vliptc-editor: a small desktop host for the IPTC editor and the EXIF
// viewer. The files and folders named on the command line are listed at the
// start.

#include <QApplication>
#include <QCommandLineParser>

#include "apps/vliptc-editor/HostFolders.h"
#include "apps/vliptc-editor/MainWindow.h"

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QCoreApplication::setOrganizationName("vliptc");
    QCoreApplication::setApplicationName("vliptc-editor");
    QCoreApplication::setApplicationVersion(VLIPTC_VERSION);

    QCommandLineParser parser;
    parser.setApplicationDescription("Edits the IPTC information and the EXIF dates of image files.");
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption defs("defs", "Read the tag definitions (vliptctags.ipt) from DIR.", "DIR");
    const QCommandLineOption user("user", "Keep user lists, synonyms, templates and the log in DIR.", "DIR");
    parser.addOption(defs);
    parser.addOption(user);
    parser.addPositionalArgument("paths", "Image files, or folders whose image files are listed.",
                                 "[PATH...]");
    parser.process(app);

    vliptc::host_app::MainWindow window(
        vliptc::host_app::ResolveHostFolders(parser.value(defs), parser.value(user)));
    window.AddPaths(parser.positionalArguments());
    window.show();
    return QApplication::exec();
}
