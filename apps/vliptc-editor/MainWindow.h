#pragma once

// The desktop host's window: the files given to it (from the command line,
// a folder or the Open dialog) in a list, and the editors run on the
// selection: the IPTC editor, and the EXIF viewer that edits dates. Each file
// is catalogued once in a reference engine, whose log goes to the user folder.

#include <cstdint>
#include <map>

#include <QMainWindow>

#include "apps/vliptc-editor/HostFolders.h"
#include "editors/VLEXIFEditor.h"
#include "editors/VLIPTCEditor.h"
#include "editors/qt/QtEditorUI.h"
#include "host/ReferenceEngine.h"

class QAction;
class QListView;
class QStandardItemModel;

namespace vliptc::host_app {

class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit MainWindow(const HostFolders& folders, QWidget* parent = nullptr);
    ~MainWindow() override;

    // Adds files, and the image files of folders (not their subfolders), to
    // the list; a file listed already is not added again.
    void AddPaths(const QStringList& paths);

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void CreateActions();
    void OpenFiles();
    void OpenFolder();
    // Runs an editor (CVLIPTCEditor or CVLEXIFEditor) on the selection.
    template <typename Editor>
    void RunEditor(Editor& editor);
    void ReportEdit(std::uint32_t result, std::size_t changed);
    void UpdateActions();
    void AddFile(const QString& path);
    void ReadSettings();
    void WriteSettings() const;

    HostFolders m_folders;
    CVLReferenceEngine m_engine;
    editors::QtEditorUI m_ui;
    CVLIPTCEditor m_iptcEditor;
    CVLEXIFEditor m_exifEditor;
    std::map<QString, std::uint32_t> m_ids;  // absolute path -> catalogue id
    QStandardItemModel* m_files;
    QListView* m_list;
    QAction* m_editIPTC = nullptr;
    QAction* m_viewEXIF = nullptr;
    QAction* m_keepTimes = nullptr;
    QString m_lastFolder;
};

}  // namespace vliptc::host_app
