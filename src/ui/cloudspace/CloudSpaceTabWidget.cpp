// SPDX-License-Identifier: MIT
#include "ui/cloudspace/CloudSpaceTabWidget.h"

#include "core/ITreeElement.h"
#include "toolkit/FileDialog.h"
#include "toolkit/ISystemSettings.h"
#include "ui/Steps.h"
#include "ui/TransferDialog.h"
#include "ui/WindowNote.h"
#include "ui/cloudspace/EnterKey.h"
#include "ui/cloudspace/TavFileButton.h"
#include "ui/cloudspace/TileArea.h"

#include <QDir>
#include <QFile>
#include <QGridLayout>
#include <QHash>
#include <QLineEdit>
#include <QProgressDialog>
#include <QScrollBar>
#include <QShortcut>

#include <algorithm>
#include <cstdlib>

using namespace tav;

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

/// The id that the platform has for an element: its own, or its project's.
QString idOf(const ITreeElement* element)
{
    QString fileId = textOf(element, "fileId");
    if (!fileId.isEmpty())
        return fileId;
    const QString projectId = textOf(element, "projectId");
    return projectId.isEmpty() && element->firstChild() ? textOf(element->firstChild(), "projectId")
                                                        : projectId;
}

/// An element of a folder, in which several may bear one name.
struct Child
{
    ITreeElement* element;
    QString name;
    int number = 0; ///< among those of its name; 0 where it is the only one
    QString which = {}; ///< the same in words

    QString description() const
    {
        return which.isEmpty() ? name : QStringLiteral("%1 (%2)").arg(name, which);
    }
};

QVector<Child> childrenOf(const ITreeElement* folder)
{
    QVector<Child> children;
    QHash<QString, int> total, seen;
    for (ITreeElement* child = folder->firstChild(); child; child = child->nextSibling()) {
        children.append({child, nameOf(child)});
        ++total[children.last().name];
    }
    for (Child& child : children) {
        if (total[child.name] < 2)
            continue;
        child.number = ++seen[child.name];
        const QString id = idOf(child.element);
        child.which = id.isEmpty()
            ? CloudSpaceTabWidget::tr("%1 of %2").arg(child.number).arg(total[child.name])
            : CloudSpaceTabWidget::tr("%1 of %2, ID %3").arg(child.number).arg(total[child.name]).arg(id);
    }
    return children;
}

/// Whether \a name is one file's or folder's name and leads nowhere else. The platform chose it.
bool isPlainFileName(const QString& name)
{
    const bool hasDrive = name.size() >= 2 && name[0].isLetter() && name[1] == ':';
    return !name.isEmpty() && name != "." && name != ".." && !name.contains('/') && !name.contains('\\')
        && !hasDrive;
}

/// How many files there are in \a element; one that is a file itself counts.
int filesIn(const ITreeElement* element)
{
    if (typeOf(element, "-1") != 0)
        return 1;
    int files = 0;
    for (const ITreeElement* child = element->firstChild(); child; child = child->nextSibling())
        files += filesIn(child);
    return files;
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

CloudSpaceTabWidget::CloudSpaceTabWidget(CloudFileManger* manager, QClipboard* board, QWidget* parent)
    : QWidget(parent)
    , backButton(new QPushButton(tr("back"), this))
    , pathEdit(new QLineEdit(this))
    , tileGrid(new QGridLayout)
    , tileArea(new TileArea(tileGrid, this))
    , refreshButton(new QPushButton(tr("Refresh"), this))
    , downloadButton(new QPushButton(tr("Download"), this))
    , client(handleOn(manager))
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

    const auto addShortcut = [this](const QKeySequence& keys, QPushButton* button) {
        auto* shortcut = new QShortcut(keys, this);
        shortcut->setContext(Qt::WidgetWithChildrenShortcut);
        connect(shortcut, &QShortcut::activated, button, [button] { button->click(); });
    };
    addShortcut(Qt::Key_Backspace, backButton);
    addShortcut(Qt::ALT | Qt::Key_Left, backButton);
    addShortcut(Qt::Key_F5, refreshButton);
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
    const bool byKeyboard = hasFocusInTiles();
    navigationStack.clear();
    clearTiles();
    tileArea->setEmptyText(QString());
    tree.reset();
    updateButtons();

    const QPointer<CloudSpaceTabWidget> self(this);
    std::shared_ptr<ITreeElement> fetched;
    const Answer answer =
        ask(this, client, tr("Loading the cloud space..."), [&fetched](CloudFileManger& cloud) {
            fetched.reset(cloud.getFileTree(), tav_tree_element_release_instance);
            return true;
        });
    if (!self || !fetched) // a window that was closed may be shown again
        return;
    navigationStack.clear(); // in case of a nested refresh
    tree = std::move(fetched);
    showFolder(tree.get());
    if (byKeyboard)
        tileArea->focusFirst();
    // The tree is shown anyway, with an empty branch.
    if (!answer.reason.isEmpty())
        tell(tr("Not everything could be loaded: %1").arg(answer.reason));
}

void CloudSpaceTabWidget::showFolder(ITreeElement* element)
{
    if (typeOf(element) == 1)
        return;
    delete note;
    // At the root "back" is disabled, and loses the focus.
    const bool byKeyboard = hasFocusInTiles() || (navigationStack.isEmpty() && backButton->hasFocus());
    clearTiles();
    navigationStack.append(element);
    placeTiles(element);
    updateButtons();
    if (byKeyboard)
        tileArea->focusFirst();
    QString path;
    for (const ITreeElement* folder : navigationStack)
        path += nameOf(folder) + '\\';
    pathEdit->setText(path);
}

void CloudSpaceTabWidget::updateButtons()
{
    backButton->setEnabled(navigationStack.size() > 1);
    downloadButton->setEnabled(selectedTile());
}

bool CloudSpaceTabWidget::hasFocusInTiles() const
{
    return tileArea->isAncestorOf(window()->focusWidget());
}

/// The last of them; null when there is none.
TavFileButton* CloudSpaceTabWidget::selectedTile() const
{
    const auto isSelected = [](const TavFileButton* tile) { return tile->selected; };
    const auto found = std::find_if(tileList.crbegin(), tileList.crend(), isSelected);
    return found == tileList.crend() ? nullptr : *found;
}

void CloudSpaceTabWidget::placeTiles(const ITreeElement* folder)
{
    int index = 0;
    for (const Child& child : childrenOf(folder)) {
        auto* tile = new TavFileButton(child.name, typeOf(child.element), nullptr);
        tile->element = child.element;
        if (child.number > 0)
            tile->setNamesake(child.number, child.which);
        connect(tile, &TavFileButton::iclicked, this, &CloudSpaceTabWidget::_onClicked);
        connect(tile, &TavFileButton::iselected, this, &CloudSpaceTabWidget::_onSelect);
        tileArea->addTile(tile, index / columns, index % columns);
        ++index;
        tileList.append(tile);
    }
    tileArea->setEmptyText(tr("This folder is empty."));
    // New tiles are last in the tab order. Moving each of them would walk the whole chain each time.
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

/// The tile that a signal comes from; null when a slot is called by itself.
TavFileButton* CloudSpaceTabWidget::senderTile() const
{
    return qobject_cast<TavFileButton*>(sender());
}

void CloudSpaceTabWidget::_onSelect(QString name)
{
    delete note;
    const TavFileButton* selected = senderTile();
    for (TavFileButton* tile : tileList) {
        if (selected ? tile != selected : tile->getName() != name)
            tile->setSelected(false);
    }
    updateButtons();
}

void CloudSpaceTabWidget::_onClicked(QString name)
{
    const TavFileButton* tile = senderTile();
    if (ITreeElement* child = tile ? tile->element : childOfCurrent(name))
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
    const QPointer<TavFileButton> selected(selectedTile());
    if (!selected)
        return;

    const Attendance attendance(this);
    // Cancelled or not: an empty directory stands for the root of the file system.
    const QString directory = FileDialog::getExistingDirectory(
        pSystemSettings, this, tr("Save path"), QString(), QFileDialog::ShowDirsOnly);
    if (!attendance.lasts() || !tileList.contains(selected))
        return;

    delete note;
    const auto kept = tree; // a nested refresh replaces the member
    missed.clear();
    downloaded = 0;
    QPointer<QDialog> progress;
    if (showsTransfers(client)) {
        progress = transfers = new TransferDialog(window());
        transfers->setCount(filesIn(selected->element));
    } else {
        progress = new DownloadProgress(this);
    }
    Outcome outcome = downloadTreeElement(selected->element, directory, selected->getDescription());
    while (outcome == Outcome::Refused && transfers && wantsToTryAgain())
        outcome = downloadAgain();
    delete progress;
    if (!attendance.lasts())
        return;
    if (outcome == Outcome::Done)
        inform(this, tr("The download is complete!"), tr("OK"));
    if (outcome == Outcome::Refused)
        tell(missedText());
    if (outcome == Outcome::Cancelled)
        tell(tr("Cancelled. Files that were downloaded: %1").arg(downloaded));
}

/// Also false when the window is gone.
bool CloudSpaceTabWidget::wantsToTryAgain()
{
    if (std::none_of(missed.cbegin(), missed.cend(), [](const Missed& one) { return one.file; }))
        return false;
    transfers->hide();
    return confirm(transfers->parentWidget(), tr("Not everything could be downloaded. Try the rest again?"),
        missedText());
}

/// After Outcome::Abandoned this may have been destroyed.
Outcome CloudSpaceTabWidget::downloadAgain()
{
    const auto before = std::exchange(missed, {});
    transfers->setCount(
        int(std::count_if(before.cbegin(), before.cend(), [](const Missed& one) { return one.file; })));
    for (const Missed& one : before) {
        const Outcome outcome = one.file ? downloadFile(one.file, one.target, one.description) : miss(one);
        if (outcome == Outcome::Abandoned || outcome == Outcome::Cancelled)
            return outcome;
    }
    return missed.isEmpty() ? Outcome::Done : Outcome::Refused;
}

/// After Outcome::Abandoned this may have been destroyed.
Outcome CloudSpaceTabWidget::downloadTreeElement(
    const ITreeElement* element, const QString& directory, const QString& description)
{
    if (!QFile::exists(directory))
        QDir().mkdir(directory);
    const QString name = nameOf(element);
    if (!isPlainFileName(name))
        return miss({description, tr("Its name in the cloud cannot be the name of a file."), nullptr, {}});
    // Unlike for its tile, an element without a type counts as a file here.
    if (typeOf(element, "-1") != 0)
        return downloadFile(element, directory + '/' + name, description);
    Outcome outcome = Outcome::Done;
    for (const Child& child : childrenOf(element)) {
        const Outcome ofChild = downloadTreeElement(
            child.element, directory + '/' + name, description + '/' + child.description());
        if (ofChild == Outcome::Abandoned || ofChild == Outcome::Cancelled)
            return ofChild;
        if (ofChild == Outcome::Refused)
            outcome = ofChild;
    }
    return outcome;
}

Outcome CloudSpaceTabWidget::downloadFile(
    const ITreeElement* file, const QString& target, const QString& description)
{
    const QString projectId = textOf(file, "projectId");
    const QString fileId = textOf(file, "fileId");
    if (projectId.isEmpty() && fileId.isEmpty())
        return miss({description, {}, nullptr, {}});

    // The download takes the old file's place only once it is whole: a transfer that fails leaves that file.
    if (QFile::exists(target)) {
        const Attendance attendance(this);
        const bool covered = confirm(this, tr("A file with the same name exists,whether or not covered?"),
            description + '\n' + QDir::toNativeSeparators(target));
        if (!attendance.lasts())
            return Outcome::Abandoned;
        if (!covered)
            return miss({description, {}, nullptr, {}});
    }

    const Transfer transfer{[&](CloudFileManger& cloud) {
                                return fileId.isEmpty() ? cloud.DownloadCloudProFile(projectId, target)
                                                        : cloud.DownloadCloudShareFile(fileId, target);
                            },
        [&](const CloudFileManger& cloud) {
            return fileId.isEmpty() ? cloud.backupDownloadJob(projectId, target)
                                    : cloud.shareDownloadJob(fileId, target);
        }};
    const Answer answer = carry(this, client, tr("Downloading %1...").arg(description), transfer, transfers);
    if (answer.outcome == Outcome::Done)
        ++downloaded;
    if (answer.outcome != Outcome::Refused)
        return answer.outcome;
    return miss({description, answer.reason, file, target});
}

Outcome CloudSpaceTabWidget::miss(const Missed& one)
{
    missed.append(one);
    return Outcome::Refused;
}

/// What the last download left out, and why.
QString CloudSpaceTabWidget::missedText() const
{
    constexpr int most = 5;
    QStringList some, reasons;
    for (const Missed& one : missed) {
        if (some.size() < most)
            some.append(one.description);
        if (!one.reason.isEmpty() && !reasons.contains(one.reason))
            reasons.append(one.reason);
    }
    QString names = some.join(", ");
    if (missed.size() > most)
        names += QStringLiteral(", ... (%1)").arg(missed.size());
    return tr("Not downloaded: %1.").arg(names) + ' ' + reasons.join(' ');
}

/// Shows a note on the tiles until the next step, instead of a message box.
void CloudSpaceTabWidget::tell(const QString& text)
{
    delete note;
    note = new WindowNote(this, text, tileArea);
}
