// SPDX-License-Identifier: MIT
#include "ui/cloudspace/CloudSpaceTabWidget.h"

#include "cloud/CloudFileManger.h"
#include "core/ITreeElement.h"
#include "toolkit/FileDialog.h"
#include "toolkit/ISystemSettings.h"
#include "ui/MessageBoxes.h"
#include "ui/WindowNote.h"
#include "ui/cloudspace/EnterKey.h"
#include "ui/cloudspace/TavFileButton.h"
#include "ui/cloudspace/TileArea.h"

#include <QDir>
#include <QFile>
#include <QGridLayout>
#include <QLineEdit>
#include <QProgressDialog>
#include <QScrollBar>

#include <cstdlib>

namespace {

constexpr int columns = 5;

QString nameOf(const ITreeElement* element)
{
    return QString::fromLocal8Bit(element->name());
}

QString textOf(const ITreeElement* element, const char* key)
{
    return QString::fromLocal8Bit(element->properties().value(key));
}

int typeOf(const ITreeElement* element, const char* whenMissing = "")
{
    const char* type = element->properties().value("type");
    return atoi(type ? type : whenMissing);
}

/// Whether \a name is one file's or folder's name and leads nowhere else. The platform chose it.
bool isPlainFileName(const QString& name)
{
    const bool hasDrive = name.size() >= 2 && name[0].isLetter() && name[1] == ':';
    return !name.isEmpty() && name != "." && name != ".." && !name.contains('/') && !name.contains('\\')
        && !hasDrive;
}

/// Tells that a download runs, without an end in sight and without a button.
class DownloadProgress : public QProgressDialog
{
public:
    explicit DownloadProgress(QWidget* parent)
        : QProgressDialog(parent, Qt::CustomizeWindowHint)
    {
        setMinimumDuration(3);
        setMinimumWidth(350);
        setLabelText(CloudSpaceTabWidget::tr("Downloading") + "...");
        setRange(0, 0);
        setCancelButton(nullptr);
        show();
    }

protected:
    /// It tells of the wait for which all else is disabled.
    void changeEvent(QEvent* event) override
    {
        if (event->type() == QEvent::EnabledChange && !isEnabled())
            setEnabled(true);
        QProgressDialog::changeEvent(event);
    }
};

} // namespace

void CloudSpaceTabWidget::Release::operator()(ITreeElement* element) const
{
    tav_tree_element_release_instance(element);
}

CloudSpaceTabWidget::CloudSpaceTabWidget(CloudFileManger* manager, QClipboard* board, QWidget* parent)
    : QWidget(parent)
    , backButton(new QPushButton(tr("back"), this))
    , pathEdit(new QLineEdit(this))
    , tileGrid(new QGridLayout)
    , tileArea(new TileArea(tileGrid, this))
    , refreshButton(new QPushButton(tr("Refresh"), this))
    , downloadButton(new QPushButton(tr("Download"), this))
    , client(manager)
    , clipboard(board)
{
    pathEdit->setReadOnly(true);
    pathEdit->setAccessibleName(tr("Folder"));
    _onRefresh();

    auto* top = new QHBoxLayout;
    top->addWidget(backButton);
    top->addWidget(pathEdit);
    auto* bottom = new QHBoxLayout;
    bottom->addStretch();
    bottom->addWidget(refreshButton);
    bottom->addWidget(downloadButton);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(tileArea);
    layout->addLayout(bottom);
    leaveEnterTo(this);
    // All columns are seen.
    const QMargins margins = tileArea->layout()->contentsMargins();
    tileArea->setMinimumWidth(columns * TavFileButton::widthIn(this)
        + (columns - 1) * tileGrid->horizontalSpacing() + margins.left() + margins.right()
        + tileArea->verticalScrollBar()->sizeHint().width());

    connect(backButton, &QPushButton::clicked, this, &CloudSpaceTabWidget::_onGetBlack);
    connect(refreshButton, &QPushButton::clicked, this, &CloudSpaceTabWidget::_onRefresh);
    connect(downloadButton, &QPushButton::clicked, this, &CloudSpaceTabWidget::_onDownload);
}

CloudSpaceTabWidget::~CloudSpaceTabWidget() = default;

void CloudSpaceTabWidget::keyPressEvent(QKeyEvent* event)
{
    if (isEnter(event))
        pressFocused(this);
    else
        QWidget::keyPressEvent(event);
}

void CloudSpaceTabWidget::_onRefresh()
{
    delete note;
    navigationStack.clear();
    clearTiles();
    tileArea->setEmptyText(QString());
    tree.reset();

    const QPointer<CloudSpaceTabWidget> self(this);
    std::unique_ptr<ITreeElement, Release> fetched;
    callPlatform(this, tr("Loading the cloud space..."), [&fetched, manager = client] {
        fetched.reset(manager->getFileTree());
        return true;
    });
    if (!self || !fetched)
        return;
    navigationStack.clear(); // should a refresh have come in between
    tree = std::move(fetched);
    showFolder(tree.get());
    // The tree is there all the same, with a branch empty.
    if (!client->getLastError().isEmpty())
        tell(tr("Not everything could be loaded: %1").arg(client->getLastError()));
}

void CloudSpaceTabWidget::showFolder(ITreeElement* element)
{
    if (typeOf(element) == 1)
        return;
    delete note;
    const bool byKeyboard = tileArea->isAncestorOf(window()->focusWidget());
    clearTiles();
    navigationStack.append(element);
    placeTiles(element);
    if (byKeyboard)
        tileArea->focusFirst();
    QString path;
    for (const ITreeElement* folder : navigationStack)
        path += nameOf(folder) + '\\';
    pathEdit->setText(path);
}

void CloudSpaceTabWidget::placeTiles(ITreeElement* folder)
{
    int index = 0;
    for (ITreeElement* child = folder->firstChild(); child; child = child->nextSibling(), ++index) {
        auto* tile = new TavFileButton(nameOf(child), typeOf(child), nullptr);
        connect(tile, &TavFileButton::iclicked, this, &CloudSpaceTabWidget::_onClicked);
        connect(tile, &TavFileButton::iselected, this, &CloudSpaceTabWidget::_onSelect);
        tileArea->addTile(tile, index / columns, index % columns);
        tileList.append(tile);
    }
    tileArea->setEmptyText(tr("This folder is empty."));
    // New tiles come after all else in the tab order. To move each would cost a walk along all of it.
    if (!tileList.isEmpty())
        setTabOrder(tileList.last()->findChild<QPushButton*>(), refreshButton);
    setTabOrder(refreshButton, downloadButton);
}

void CloudSpaceTabWidget::clearTiles()
{
    for (TavFileButton* tile : tileList) {
        tileGrid->removeWidget(tile);
        tile->hide();
        tile->deleteLater();
    }
    tileList.clear();
    tileArea->scrollToTop();
}

void CloudSpaceTabWidget::_onSelect(QString name)
{
    delete note;
    for (TavFileButton* tile : tileList) {
        if (tile->getName() != name)
            tile->setSelected(false);
    }
}

void CloudSpaceTabWidget::_onClicked(QString name)
{
    if (ITreeElement* child = childOfCurrent(name))
        showFolder(child);
}

void CloudSpaceTabWidget::_onGetBlack()
{
    if (navigationStack.size() < 2)
        return;
    navigationStack.removeLast();
    showFolder(navigationStack.takeLast());
}

ITreeElement* CloudSpaceTabWidget::childOfCurrent(const QString& name) const
{
    return navigationStack.isEmpty() ? nullptr
                                     : navigationStack.last()->findChild(name.toLocal8Bit().constData());
}

void CloudSpaceTabWidget::_onDownload()
{
    const TavFileButton* selected = nullptr;
    for (const TavFileButton* tile : tileList) {
        if (tile->selected)
            selected = tile;
    }
    if (!selected)
        return;
    const QString name = selected->getName();

    const QPointer<CloudSpaceTabWidget> self(this);
    // Cancelled or not: an empty directory stands for the root of the file system.
    const QString directory = FileDialog::getExistingDirectory(
        pSystemSettings, this, tr("Save path"), QString(), QFileDialog::ShowDirsOnly);
    ITreeElement* element = self ? childOfCurrent(name) : nullptr;
    if (!element)
        return;

    delete note;
    missed.clear();
    const QPointer<DownloadProgress> progress(new DownloadProgress(this));
    const Outcome outcome = downloadTreeElement(element, directory);
    delete progress;
    if (outcome == Outcome::Done)
        inform(this, tr("The download is complete!"), tr("OK"));
    if (outcome == Outcome::Refused)
        tell(tr("Not downloaded: %1").arg(QStringList(missed.mid(0, 5)).join(", "))
            + (missed.size() > 5 ? QStringLiteral(", ... (%1)").arg(missed.size()) : QString()));
}

/// After Outcome::Abandoned neither the tree nor this may exist any more.
Outcome CloudSpaceTabWidget::downloadTreeElement(const ITreeElement* element, const QString& directory)
{
    if (!QFile::exists(directory))
        QDir().mkdir(directory);
    const QString name = nameOf(element);
    if (!isPlainFileName(name))
        return miss(name, tr("not a file name"));
    // Other than its tile, an element without a type is a file here.
    if (typeOf(element, "-1") != 0)
        return downloadFile(element, directory + '/' + name);
    Outcome outcome = Outcome::Done;
    for (const ITreeElement* child = element->firstChild(); child; child = child->nextSibling()) {
        const Outcome ofChild = downloadTreeElement(child, directory + '/' + name);
        if (ofChild == Outcome::Abandoned)
            return ofChild;
        if (ofChild == Outcome::Refused)
            outcome = ofChild;
    }
    return outcome;
}

Outcome CloudSpaceTabWidget::downloadFile(const ITreeElement* file, const QString& target)
{
    const QString name = nameOf(file);
    const QString projectId = textOf(file, "projectId");
    const QString fileId = textOf(file, "fileId");
    if (projectId.isEmpty() && fileId.isEmpty())
        return miss(name);

    // The download takes the old file's place only once it is whole: a transfer that fails leaves that file.
    if (QFile::exists(target)) {
        const QPointer<CloudSpaceTabWidget> self(this);
        const bool wasOpen = isVisible();
        tell(QDir::toNativeSeparators(target)); // which file the question is about
        const bool covered = askBox(QMessageBox::Question, this, tr("Prompt"),
            tr("A file with the same name exists,whether or not covered?"));
        if (!self || (wasOpen && !isVisible()))
            return Outcome::Abandoned;
        delete note;
        if (!covered)
            return miss(name);
    }

    const auto request = [projectId, fileId, target, manager = client] {
        return fileId.isEmpty() ? manager->DownloadCloudProFile(projectId, target)
                                : manager->DownloadCloudShareFile(fileId, target);
    };
    const Outcome outcome = callPlatform(this, tr("Downloading %1...").arg(name), request);
    if (outcome != Outcome::Refused)
        return outcome;
    const bool asked = !fileId.isEmpty() || !client->getProjectId().isEmpty();
    return miss(name, asked ? client->getLastError() : tr("no cloud project is chosen"));
}

Outcome CloudSpaceTabWidget::miss(const QString& name, const QString& reason)
{
    missed.append(reason.isEmpty() ? name : QStringLiteral("%1 (%2)").arg(name, reason));
    return Outcome::Refused;
}

/// A line on the tiles until the next step: what is no message box's affair.
void CloudSpaceTabWidget::tell(const QString& text)
{
    delete note;
    note = new WindowNote(this, text, tileArea);
}
