// SPDX-License-Identifier: MIT
#pragma once

#include <QMainWindow>
#include <QMessageBox>
#include <QSet>

#include <functional>

class Backups;
class CloudFileManger;
class QAction;
class QLabel;
class QStackedWidget;
class QTreeWidget;
class QTreeWidgetItem;

/// A list of drawings, and what the module can do with the one that is selected.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    MainWindow();

    /// Adds those of \a paths that are files, and tells of the others.
    void addDrawings(const QStringList& paths);

protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void makeActions();
    void makeList();
    void updateActions();

    void chooseDrawings();
    void removeDrawing();
    void signIn();
    void signOut();
    void openCloudSpace();
    void backUp();
    void convert();

    void endBackup(const QString& path, bool isBackedUp, const QString& problem);
    void tellProblems();
    bool givesUpBackups(const QString& question);

    QTreeWidgetItem* selected() const;
    QTreeWidgetItem* itemOf(const QString& path) const;
    bool perform(const QString& work, const QString& failure, const std::function<bool()>& call,
        const std::function<QString()>& reason);
    bool answered(QMessageBox::Icon icon, const QString& text, QMessageBox::StandardButtons buttons);

    QAction* signInAction;
    QAction* signOutAction;
    QAction* backUpAction;
    QAction* spaceAction;
    QAction* convertAction;
    QAction* addAction;
    QAction* removeAction;
    QStackedWidget* pages;
    QTreeWidget* drawings;
    QLabel* account;
    Backups* backups;
    QSet<QString> ownProjects; ///< that this window backed up into, or made
    QStringList problems; ///< of backups, which the user has not been told of yet
    bool busy = false;
};
