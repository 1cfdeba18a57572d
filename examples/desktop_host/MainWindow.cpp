// SPDX-License-Identifier: MIT
#include "MainWindow.h"

#include "Backups.h"
#include "account/CloudAccountLogin.h"
#include "cloud/CloudFileManger.h"
#include "convert/CadConversion.h"
#include "net/CloudTransferJob.h"
#include "toolkit/FileDialog.h"
#include "toolkit/ISystemSettings.h"
#include "ui/CloudTransferWindow.h"
#include "ui/account/DlgLoginCloundPlatform.h"
#include "ui/account/DlgLogoutCloundPlatform.h"
#include "ui/cloudspace/DlgMyCloudSpace.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QDateTime>
#include <QDropEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QMenuBar>
#include <QMimeData>
#include <QPointer>
#include <QRegularExpression>
#include <QStackedWidget>
#include <QStatusBar>
#include <QTimer>
#include <QToolBar>
#include <QTreeWidget>

namespace {

enum Column
{
    Name,
    Folder,
    BackedUp
};

QString pathOf(const QTreeWidgetItem* drawing)
{
    return drawing->toolTip(Name);
}

/// A menu's text as a tool bar shows it. Qt leaves the "(&C)" of Chinese texts half in place.
QString plain(const QString& text)
{
    return QString(text).remove(QRegularExpression(R"(\(&.\)|&|\.\.\.)"));
}

/// Where the conversion is told to put its result: beside the drawing. Empty for a file that it does not
/// take. Of a DGN drawing's name the module keeps what stands before the first dot.
QString convertedPath(const QFileInfo& drawing)
{
    const QString kind = drawing.suffix().toLower();
    if (kind == "dgn")
        return drawing.path() + '/' + drawing.baseName() + ".dwg";
    if (kind == "dwg")
        return drawing.path() + '/' + drawing.completeBaseName() + ".dgn";
    return QString();
}

/// Over any line: a transfer may last as long as something moves.
CloudTransferOptions patience()
{
    CloudTransferOptions options;
    options.limit = CloudTransferOptions::Limit::LastByte;
    options.limitMs = 30000;
    options.continueDownloads = true;
    return options;
}

/// A client keeps the token that it was built with, so each piece of work takes a new one. A drawing's
/// project has the name of the file, suffix and all, so its backup needs no suffix of its own. What other
/// desktop hosts share is listed in any case.
CloudFileManger newClient()
{
    const CloudAccountLogin* session = CloudAccountLogin::instance();
    CloudFileManger client(session->getUrl(), session->getToken(), QString(), "DesktopHost", {"ConsoleHost"},
        QString(), QString(), QString());
    client.setTransferOptions(patience());
    return client;
}

/// The id of the user's project with that title; empty when there is none.
QString projectTitled(const QString& title, const CloudFileManger& client)
{
    for (const auto& project : client.getAllCloudProjects()) {
        if (project.projectTitle == title)
            return project.id;
    }
    return QString();
}

QString reasonOf(const CloudFileManger& client)
{
    return cloudFailureText(client.getLastFailure(), client.getLastError());
}

/// Runs one of the module's dialogs, which is on the heap because whoever deletes the parent meanwhile
/// deletes the dialog too.
void run(const QPointer<QDialog>& dialog)
{
    dialog->exec();
    delete dialog;
}

} // namespace

MainWindow::MainWindow()
    : account(new QLabel)
    , backups(new Backups)
{
    setWindowTitle(tr("Drawings"));
    setAcceptDrops(true);
    makeActions();
    makeList();
    account->setTextFormat(Qt::PlainText); // the platform chose the name
    statusBar()->addPermanentWidget(backups);
    statusBar()->addPermanentWidget(account);
    connect(backups, &Backups::progressed, this, [this](const QString& path, int percent) {
        if (QTreeWidgetItem* drawing = itemOf(path))
            drawing->setText(BackedUp, tr("%1 %").arg(percent));
    });
    connect(backups, &Backups::ended, this, &MainWindow::endBackup);
    resize(sizeHint().expandedTo({720, 400}));
    updateActions();
}

void MainWindow::makeActions()
{
    // Icons come from the desktop's theme; without one, the texts say it all.
    const auto make = [this](const QString& text, const char* icon, const QKeySequence& shortcut,
                          void (MainWindow::*slot)()) {
        auto* action = new QAction(QIcon::fromTheme(icon), text, this);
        action->setIconText(plain(text));
        action->setShortcut(shortcut);
        connect(action, &QAction::triggered, this, slot);
        return action;
    };
    addAction =
        make(tr("&Add Drawings..."), "document-open", QKeySequence::Open, &MainWindow::chooseDrawings);
    removeAction =
        make(tr("&Remove from the List"), "list-remove", QKeySequence::Delete, &MainWindow::removeDrawing);
    convertAction = make(tr("&Convert..."), "view-refresh", QKeySequence("Ctrl+T"), &MainWindow::convert);
    signInAction = make(tr("Sign &In..."), "user-available", QKeySequence("Ctrl+L"), &MainWindow::signIn);
    signOutAction =
        make(tr("Sign &Out..."), "system-log-out", QKeySequence("Ctrl+Shift+L"), &MainWindow::signOut);
    backUpAction =
        make(tr("&Back Up to the Cloud"), "document-send", QKeySequence("Ctrl+B"), &MainWindow::backUp);
    spaceAction =
        make(tr("&My Cloud Space"), "folder-remote", QKeySequence("Ctrl+M"), &MainWindow::openCloudSpace);
    auto* quitAction = new QAction(QIcon::fromTheme("application-exit"), tr("&Quit"), this);
    quitAction->setShortcut(QKeySequence::Quit);
    connect(quitAction, &QAction::triggered, this, &QWidget::close);

    QMenu* file = menuBar()->addMenu(tr("&File"));
    file->addActions({addAction, removeAction, convertAction});
    file->addSeparator();
    file->addAction(quitAction);
    QMenu* cloud = menuBar()->addMenu(tr("&Cloud"));
    cloud->addActions({signInAction, signOutAction});
    cloud->addSeparator();
    cloud->addActions({backUpAction, spaceAction});

    QToolBar* bar = addToolBar(tr("Tools"));
    bar->setMovable(false);
    bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    bar->addActions({addAction, convertAction, backUpAction});
    bar->addSeparator();
    bar->addActions({spaceAction, signInAction, signOutAction});
    setContextMenuPolicy(Qt::NoContextMenu); // the one that could hide the tool bar
}

void MainWindow::makeList()
{
    drawings = new QTreeWidget;
    drawings->setAccessibleName(tr("Drawings"));
    drawings->setHeaderLabels({tr("Drawing"), tr("Folder"), tr("Backed up")});
    drawings->setRootIsDecorated(false);
    drawings->setAlternatingRowColors(true);
    drawings->header()->setStretchLastSection(false);
    drawings->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    drawings->header()->setSectionResizeMode(Folder, QHeaderView::Stretch);
    drawings->setContextMenuPolicy(Qt::ActionsContextMenu);
    drawings->addActions({backUpAction, convertAction, removeAction});
    connect(drawings, &QTreeWidget::itemSelectionChanged, this, &MainWindow::updateActions);

    auto* invitation = new QLabel(tr("Add drawings by the tool bar, or drop them here."));
    invitation->setAlignment(Qt::AlignCenter);
    invitation->setWordWrap(true);
    pages = new QStackedWidget;
    pages->addWidget(invitation);
    pages->addWidget(drawings);
    setCentralWidget(pages);
}

/// What can be done now is enabled, and nothing else.
void MainWindow::updateActions()
{
    const CloudAccountLogin* session = CloudAccountLogin::instance();
    const bool signedIn = session->getLoginState();
    for (QAction* action : {addAction, convertAction})
        action->setEnabled(!busy);
    for (QAction* action : {signOutAction, backUpAction, spaceAction})
        action->setEnabled(!busy && signedIn);
    if (selected() && backups->isRunning(pathOf(selected())))
        backUpAction->setEnabled(false);
    removeAction->setEnabled(!busy && selected());
    signInAction->setEnabled(!busy && !signedIn);
    account->setText(signedIn ? tr("Signed in as %1").arg(session->getUserName()) : tr("Not signed in"));
}

void MainWindow::addDrawings(const QStringList& paths)
{
    QStringList refused;
    for (const QString& path : paths) {
        const QFileInfo file(QFileInfo(path).canonicalFilePath());
        if (!file.isFile() || !file.isReadable()) {
            refused += path;
            continue;
        }
        QTreeWidgetItem* drawing = itemOf(file.filePath());
        if (!drawing) {
            drawing = new QTreeWidgetItem(drawings, {file.fileName(), file.path()});
            drawing->setToolTip(Name, file.filePath());
        }
        drawings->setCurrentItem(drawing);
    }
    pages->setCurrentIndex(drawings->topLevelItemCount() > 0);
    pages->currentWidget()->setFocus();
    if (!refused.isEmpty())
        answered(QMessageBox::Warning, tr("These files cannot be read:\n\n%1").arg(refused.join('\n')),
            QMessageBox::Ok);
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event)
{
    if (!busy && event->mimeData()->hasUrls())
        event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event)
{
    if (busy) // since the drag came in
        return;
    QStringList paths;
    for (const QUrl& url : event->mimeData()->urls())
        paths += url.toLocalFile();
    event->acceptProposedAction();
    addDrawings(paths);
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    const QPointer<MainWindow> self(this);
    event->setAccepted(
        givesUpBackups(tr("Drawings are still being backed up. Give that up and close?")) && self);
}

void MainWindow::chooseDrawings()
{
    const QPointer<MainWindow> self(this);
    const QStringList paths = QFileDialog::getOpenFileNames(this, tr("Add Drawings"),
        pSystemSettings->lastDirectory(), tr("Drawings (*.dgn *.dwg);;All files (*)"));
    if (!self || paths.isEmpty())
        return;
    pSystemSettings->setLastDirectory(QFileInfo(paths.first()).absolutePath());
    addDrawings(paths);
}

/// From the list; the file stays.
void MainWindow::removeDrawing()
{
    delete selected();
    pages->setCurrentIndex(drawings->topLevelItemCount() > 0);
}

void MainWindow::signIn()
{
    const QPointer<MainWindow> self(this);
    run(new DlgLoginCloundPlatform(this));
    // Whatever the dialog's result: the session knows.
    if (self)
        updateActions();
}

void MainWindow::signOut()
{
    const QPointer<MainWindow> self(this);
    if (!givesUpBackups(tr("Drawings are still being backed up. Give that up and sign out?")) || !self)
        return;
    run(new DlgLogoutCloundPlatform(this));
    if (!self)
        return;
    updateActions();
    if (CloudAccountLogin::instance()->getLoginState())
        return;
    // The next user has another cloud space.
    ownProjects.clear();
    for (int row = 0; row < drawings->topLevelItemCount(); ++row) {
        QTreeWidgetItem* drawing = drawings->topLevelItem(row);
        drawing->setData(BackedUp, Qt::UserRole, {});
        drawing->setText(BackedUp, QString());
    }
}

void MainWindow::openCloudSpace()
{
    const QPointer<MainWindow> self(this);
    CloudFileManger client = newClient();
    QPointer<DlgMyCloudSpace> dialog;
    const auto build = [&] {
        if (!client.getAllCloudProjectBackup() || !self)
            return false;
        // Without a current project the dialog could not download a backup, whichever it is.
        const auto projects = client.getAllCloudProjects();
        if (!projects.isEmpty())
            client.setProjectID(projects.firstKey());
        // The kinds of drawings, and the numbers that the platform has for them.
        dialog = new DlgMyCloudSpace(&client, {{"dgn", "1"}, {"dwg", "2"}},
            CloudAccountLogin::instance()->getUserName(), QString(), self);
        return true;
    };
    if (perform(tr("Opening your cloud space..."), tr("Your cloud space was not opened."), build,
            [&] { return reasonOf(client); }))
        dialog->exec();
    delete dialog;
}

void MainWindow::backUp()
{
    const QPointer<MainWindow> self(this);
    if (!selected())
        chooseDrawings();
    if (!self || !selected())
        return;
    QTreeWidgetItem* drawing = selected();
    const QString path = pathOf(drawing);
    const QString name = drawing->text(Name);
    // The module announces an unreadable file to the platform all the same.
    if (!QFileInfo(path).isReadable()) {
        answered(QMessageBox::Critical, tr("%1 cannot be read any more.").arg(path), QMessageBox::Ok);
        return;
    }

    CloudFileManger client = newClient();
    const QString work = tr("Backing up %1...").arg(name);
    const QString failure = tr("%1 was not backed up.").arg(name);
    const auto reason = [&] { return reasonOf(client); };
    if (!perform(
            work, failure, [&] { return client.getAllCloudProjectBackup(); }, reason))
        return;
    const QString known = projectTitled(name, client);
    // What is there may come from another drawing of that name.
    if (!known.isEmpty() && !ownProjects.contains(known)
        && !answered(QMessageBox::Question,
            tr("There is a backup of %1 in the cloud already. Replace it?").arg(name),
            QMessageBox::Yes | QMessageBox::No))
        return;
    client.setProjectID(known);
    if (known.isEmpty()
        && !perform(
            work, failure, [&] { return client.AddCloudProInfo(name, QString()); }, reason))
        return;
    ownProjects.insert(client.getProjectId());
    backups->start(client.backupJob(path));
    updateActions();
}

void MainWindow::endBackup(const QString& path, bool isBackedUp, const QString& problem)
{
    const QString name = QFileInfo(path).fileName();
    if (QTreeWidgetItem* drawing = itemOf(path)) {
        if (isBackedUp)
            drawing->setData(
                BackedUp, Qt::UserRole, QLocale().toString(QTime::currentTime(), QLocale::ShortFormat));
        drawing->setText(BackedUp, drawing->data(BackedUp, Qt::UserRole).toString());
    }
    updateActions();
    statusBar()->showMessage(
        isBackedUp ? tr("%1 is in the cloud.").arg(name) : tr("%1 was not backed up.").arg(name), 5000);
    if (!problem.isEmpty()) {
        problems += tr("%1 was not backed up.").arg(name) + "\n\n" + problem;
        QTimer::singleShot(0, this, &MainWindow::tellProblems);
    }
}

/// Once the user is at nothing else.
void MainWindow::tellProblems()
{
    if (busy || QApplication::activeModalWidget())
        QTimer::singleShot(500, this, &MainWindow::tellProblems);
    else if (!problems.isEmpty())
        answered(QMessageBox::Critical, problems.takeFirst(), QMessageBox::Ok);
}

/// Whether nothing is being backed up, because the user does not mind if he has to be asked. The window may
/// be destroyed when he is.
bool MainWindow::givesUpBackups(const QString& question)
{
    const QPointer<MainWindow> self(this);
    if (!backups->areRunning())
        return true;
    if (!answered(QMessageBox::Question, question, QMessageBox::Yes | QMessageBox::No))
        return false;
    if (self)
        backups->cancel();
    return true;
}

void MainWindow::convert()
{
    const QPointer<MainWindow> self(this);
    const QTreeWidgetItem* drawing = selected();
    const QString path = FileDialog::getOpenFileName(pSystemSettings, this, tr("Convert"),
        drawing ? pathOf(drawing) : QString(), tr("Drawings (*.dgn *.dwg)"));
    if (!self || path.isEmpty())
        return;
    const QString target = convertedPath(QFileInfo(path));
    if (target.isEmpty()) {
        answered(
            QMessageBox::Warning, tr("%1 is neither a DGN nor a DWG drawing.").arg(path), QMessageBox::Ok);
        return;
    }
    if (QFileInfo::exists(target)
        && !answered(QMessageBox::Question, tr("%1 exists already. Replace it?").arg(target),
            QMessageBox::Yes | QMessageBox::No))
        return;

    const std::unique_ptr<CloudTransferJob> job(target.endsWith(".dwg")
            ? dgn2DwgJob(path, target, patience())
            : dwg2DgnJob(path, target, patience()));
    const QString work = tr("Converting %1...").arg(QFileInfo(path).fileName());
    const auto send = [&] {
        return runCloudTransfer(*job, this, work) || job->failure() == CloudFailure::Cancelled;
    };
    const auto reason = [&] {
        const QString refusal = job->conversionReport().refusal;
        const QString text = cloudFailureText(job->failure(), job->errorText());
        return refusal.isEmpty() ? text : text + "\n\n" + tr("The service says: %1").arg(refusal);
    };
    if (!perform(work, tr("%1 was not converted.").arg(path), send, reason)
        || job->failure() == CloudFailure::Cancelled)
        return;
    addDrawings({target});
    QStringList leftOut = job->conversionReport().leftOut;
    constexpr int most = 15; // lines of a box
    if (leftOut.size() > most)
        leftOut = leftOut.mid(0, most) + QStringList("...");
    if (!leftOut.isEmpty()) {
        answered(QMessageBox::Warning,
            tr("%1 was converted, but not all of it has a place in the result. What is missing:")
                    .arg(QFileInfo(path).fileName())
                + "\n\n" + leftOut.join('\n'),
            QMessageBox::Ok);
        if (!self)
            return;
    }
    statusBar()->showMessage(tr("Converted to %1.").arg(target), 5000);
}

/// Null where it is not in the list.
QTreeWidgetItem* MainWindow::itemOf(const QString& path) const
{
    for (QTreeWidgetItem* drawing :
        drawings->findItems(QFileInfo(path).fileName(), Qt::MatchCaseSensitive, Name)) {
        if (pathOf(drawing) == path)
            return drawing;
    }
    return nullptr;
}

QTreeWidgetItem* MainWindow::selected() const
{
    return drawings->selectedItems().value(0);
}

/// Runs \a call, which blocks in an event loop of its own, saying that it is at \a work, and tells of a
/// \a failure with its reason. False also when the window was closed or destroyed meanwhile: nobody waits for
/// an answer then, and the window may not be touched.
bool MainWindow::perform(const QString& work, const QString& failure, const std::function<bool()>& call,
    const std::function<QString()>& reason)
{
    const QPointer<MainWindow> self(this);
    busy = true;
    updateActions();
    statusBar()->showMessage(work);
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const bool done = call();
    QApplication::restoreOverrideCursor();
    // What was pressed meanwhile comes now, and finds its action disabled.
    QCoreApplication::processEvents();
    if (!self)
        return false;
    busy = false;
    statusBar()->clearMessage();
    updateActions();
    if (!isVisible())
        return false;
    if (done)
        return true;

    answered(QMessageBox::Critical, failure + "\n\n" + reason(), QMessageBox::Ok);
    return false;
}

/// Shows a box and waits; whether the answer is Yes. The text may be the platform's and is never rich text.
bool MainWindow::answered(QMessageBox::Icon icon, const QString& text, QMessageBox::StandardButtons buttons)
{
    const QPointer<QMessageBox> box(new QMessageBox(icon, windowTitle(), text, buttons, this));
    box->setTextFormat(Qt::PlainText);
    box->setDefaultButton(QMessageBox::No); // where there is one: Enter alone replaces nothing
    const bool yes = box->exec() == QMessageBox::Yes;
    delete box;
    return yes;
}
