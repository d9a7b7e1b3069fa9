// The desktop host's window (see MainWindow.h).

#include "apps/vliptc-editor/MainWindow.h"

#include <algorithm>
#include <vector>

#include <QCloseEvent>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QListView>
#include <QMenuBar>
#include <QMessageBox>
#include <QSettings>
#include <QStandardItemModel>
#include <QStatusBar>
#include <QToolBar>

#include "exif/EXIF.h"
#include "iptc/IPTC.h"

namespace vliptc::host_app {

namespace {

constexpr int kIdRole = Qt::UserRole + 1;

// Whether one of the editors takes files of this name (by extension, as the
// editors themselves decide).
bool IsImageFile(const QString& path) {
    static const CIPTC iptcFormats;
    static const CVLEXIF exifFormats;
    const std::string name = path.toStdString();
    return iptcFormats.IsSupportedFormat(name.c_str()) || exifFormats.IsSupportedFormat(name.c_str());
}

static_assert(CVLEXIFEditor::kResultAborted == CVLIPTCEditor::kResultAborted);

QString Files(int count) {
    return count == 1 ? MainWindow::tr("1 file") : MainWindow::tr("%1 files").arg(count);
}

}  // namespace

MainWindow::MainWindow(const HostFolders& folders, QWidget* parent)
    : QMainWindow(parent),
      m_folders(folders),
      m_engine(folders.log),
      m_ui(this),
      m_iptcEditor(&m_engine, folders.definitions, folders.user, &m_ui),
      m_exifEditor(&m_engine, &m_ui),
      m_files(new QStandardItemModel(this)),
      m_list(new QListView(this)) {
    setWindowTitle(tr("vliptc-editor"));
    m_list->setModel(m_files);
    m_list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_list->setUniformItemSizes(true);
    setCentralWidget(m_list);
    CreateActions();
    connect(m_list, &QListView::activated, this, [this] { RunEditor(m_iptcEditor); });
    connect(m_list->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this] { UpdateActions(); });
    ReadSettings();
    UpdateActions();
}

MainWindow::~MainWindow() = default;

void MainWindow::CreateActions() {
    QMenu* file = menuBar()->addMenu(tr("&File"));
    QAction* openFiles = file->addAction(tr("&Open Files..."), this, &MainWindow::OpenFiles);
    openFiles->setShortcut(QKeySequence::Open);
    QAction* openFolder = file->addAction(tr("Open &Folder..."), this, &MainWindow::OpenFolder);
    file->addSeparator();
    file->addAction(tr("E&xit"), this, &QWidget::close)->setShortcut(QKeySequence::Quit);

    QMenu* image = menuBar()->addMenu(tr("&Image"));
    m_editIPTC = image->addAction(tr("Edit &IPTC..."), this, [this] { RunEditor(m_iptcEditor); });
    m_editIPTC->setShortcut(tr("Ctrl+I"));
    m_editIPTC->setToolTip(tr("Edit the IPTC information of the selected files"));
    m_viewEXIF = image->addAction(tr("View &EXIF..."), this, [this] { RunEditor(m_exifEditor); });
    m_viewEXIF->setShortcut(tr("Ctrl+E"));
    m_viewEXIF->setToolTip(
        tr("Show the EXIF data of the current file; its dates can be changed in the "
           "selected files"));

    QMenu* options = menuBar()->addMenu(tr("&Options"));
    m_keepTimes = options->addAction(tr("&Keep file times"));
    m_keepTimes->setCheckable(true);
    m_keepTimes->setToolTip(tr("Written files keep their access and modification times"));

    QToolBar* tools = addToolBar(tr("Files"));
    tools->setObjectName("files");
    tools->setToolButtonStyle(Qt::ToolButtonTextOnly);
    tools->setMovable(false);
    for (QAction* action : {openFiles, openFolder}) tools->addAction(action);
    tools->addSeparator();
    for (QAction* action : {m_editIPTC, m_viewEXIF}) tools->addAction(action);
    tools->addSeparator();
    tools->addAction(m_keepTimes);
}

void MainWindow::AddPaths(const QStringList& paths) {
    for (const QString& path : paths) {
        const QFileInfo info(path);
        if (!info.isDir()) {
            AddFile(info.absoluteFilePath());
            continue;
        }
        const QDir folder(info.absoluteFilePath());
        for (const QString& name : folder.entryList(QDir::Files, QDir::Name | QDir::IgnoreCase)) {
            if (IsImageFile(name)) AddFile(folder.absoluteFilePath(name));
        }
    }
    statusBar()->showMessage(Files(m_files->rowCount()));
    UpdateActions();
}

void MainWindow::AddFile(const QString& path) {
    const QString absolute = QDir::cleanPath(path);
    if (m_ids.contains(absolute)) return;
    const std::uint32_t id = m_engine.AddFile(absolute.toStdString());
    m_ids.emplace(absolute, id);
    auto* item = new QStandardItem(QDir::toNativeSeparators(absolute));
    item->setData(id, kIdRole);
    m_files->appendRow(item);
}

void MainWindow::OpenFiles() {
    const QStringList paths = QFileDialog::getOpenFileNames(
        this, tr("Open Files"), m_lastFolder,
        tr("Images (*.jpg *.jpeg *.jpe *.jfif *.tif *.tiff *.psd *.crw *.nef *.thm);;All files (*)"));
    if (paths.isEmpty()) return;
    m_lastFolder = QFileInfo(paths.front()).absolutePath();
    AddPaths(paths);
}

void MainWindow::OpenFolder() {
    const QString folder = QFileDialog::getExistingDirectory(this, tr("Open Folder"), m_lastFolder);
    if (folder.isEmpty()) return;
    m_lastFolder = folder;
    AddPaths({folder});
}

template <typename Editor>
void MainWindow::RunEditor(Editor& editor) {
    QModelIndexList rows = m_list->selectionModel()->selectedRows();
    if (rows.isEmpty()) return;
    std::sort(rows.begin(), rows.end(),
              [](const QModelIndex& a, const QModelIndex& b) { return a.row() < b.row(); });
    std::vector<std::uint32_t> ids;
    for (const QModelIndex& row : rows) ids.push_back(row.data(kIdRole).toUInt());
    // The file on view is the current one when it is selected.
    const QModelIndex current = m_list->currentIndex();
    const std::uint32_t templateId =
        current.isValid() && rows.contains(current) ? current.data(kIdRole).toUInt() : ids.front();

    std::vector<std::uint32_t> changed;
    const int flags = m_keepTimes->isChecked() ? Editor::kFlagKeepFileTimes : 0;
    const std::uint32_t result = editor.ShowEditor(ids, templateId, changed, flags, this);
    ReportEdit(result, changed.size());
}

void MainWindow::ReportEdit(std::uint32_t result, std::size_t changed) {
    const int count = static_cast<int>(changed);
    switch (result) {
        case kVLSuccess:
            statusBar()->showMessage(count == 0 ? tr("No file was changed.")
                                                : tr("%1 changed.").arg(Files(count)));
            return;
        case CVLIPTCEditor::kResultAborted:  // CVLEXIFEditor's too
            statusBar()->showMessage(tr("Stopped; %1 changed.").arg(Files(count)));
            return;
        case CVLIPTCEditor::kResultNotInitialized:
            QMessageBox::critical(this, windowTitle(),
                                  tr("The IPTC editor cannot start: the tag definitions (vliptctags.ipt) "
                                     "could not be read from %1.\nStart vliptc-editor with --defs DIR.")
                                      .arg(QString::fromStdString(m_folders.definitions)));
            return;
        case CVLIPTCEditor::kResultTemplateUnreadable:
            QMessageBox::warning(this, windowTitle(),
                                 tr("The IPTC data of the template file could not be read."));
            return;
        case CVLEXIFEditor::kResultTemplateUnreadable:
            QMessageBox::warning(this, windowTitle(),
                                 tr("The EXIF data of the template file could not be read."));
            return;
        default: {
            const std::string text = CVLReferenceEngine::ErrorText(result);
            QMessageBox::warning(
                this, windowTitle(),
                text.empty() ? tr("The host reported error %1.").arg(result) : QString::fromStdString(text));
        }
    }
}

void MainWindow::UpdateActions() {
    const bool selected = m_list->selectionModel()->hasSelection();
    m_editIPTC->setEnabled(selected);
    m_viewEXIF->setEnabled(selected);
}

void MainWindow::ReadSettings() {
    const QSettings settings;
    restoreGeometry(settings.value("window/geometry").toByteArray());
    m_keepTimes->setChecked(settings.value("keepFileTimes", false).toBool());
    m_lastFolder = settings.value("lastFolder").toString();
}

void MainWindow::WriteSettings() const {
    QSettings settings;
    settings.setValue("window/geometry", saveGeometry());
    settings.setValue("keepFileTimes", m_keepTimes->isChecked());
    settings.setValue("lastFolder", m_lastFolder);
}

void MainWindow::closeEvent(QCloseEvent* event) {
    WriteSettings();
    event->accept();
}

}  // namespace vliptc::host_app
