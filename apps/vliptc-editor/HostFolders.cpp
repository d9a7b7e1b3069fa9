// The desktop host's folders (see HostFolders.h).

#include "apps/vliptc-editor/HostFolders.h"

#include <QCoreApplication>
#include <QDir>
#include <QStandardPaths>

namespace vliptc::host_app {

namespace {

std::string WithSlash(const QString& folder) {
    const std::string path = QDir::cleanPath(QDir(folder).absolutePath()).toStdString();
    return path.ends_with('/') ? path : path + "/";
}

}  // namespace

HostFolders ResolveHostFolders(const QString& definitions, const QString& user) {
    HostFolders folders;
    folders.definitions = WithSlash(
        definitions.isEmpty() ? QCoreApplication::applicationDirPath() + "/../share/vliptc" : definitions);
    folders.user = WithSlash(
        user.isEmpty() ? QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + "/vliptc"
                       : user);
    QDir().mkpath(QString::fromStdString(folders.user));
    folders.log = folders.user + "vliptc-editor.log";
    return folders;
}

}  // namespace vliptc::host_app
