// SPDX-License-Identifier: MIT
#pragma once

#include "cloud/CloudHandle.h"

#include <QMap>
#include <QWidget>

class QClipboard;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace tav {
class RecordTable;
} // namespace tav

/// Shares a local file by extraction code, with friends or with groups, and extracts what others shared.
class CloudShareTabWidget : public QWidget
{
    Q_OBJECT

public:
    /// Asks the platform for the friends and the groups.
    CloudShareTabWidget(CloudFileManger* manager, QString projectName, QString projectId,
        QMap<QString, QString> fileTypeMap, QClipboard* systemClipboard, QString fourth, QString ownAccount,
        QWidget* parent);

signals:
    /// Emitted when something was added to the user's cloud space.
    void refreshMyCloudSpace();

protected:
    void keyPressEvent(QKeyEvent* event) override;

private slots:
    void _onChangeAnonymousShare();
    void _onChangeAccountNumber();
    void _onChangeShareToGroup();
    void _onOpenFileDlg();
    void _onOpenAddressBookManageDlg();
    void _onOpenGroupManageDlg();
    void _onAnonymousShare();
    void _onAccountNumberShare();
    void _onGroupShare();
    void _onPasteCode();
    void _onConfirmExtraction();
    void _onChangeCBoxState(int row);
    void _onChangeCBoxState2(int row);

private:
    QWidget* makeFileBox();
    QWidget* makeAnonymousPage();
    QWidget* makeFriendsPage();
    QWidget* makeGroupsPage();
    void showMode(int chosen);
    void loadFriends();
    void loadGroups();

    QString fileToShare(const QString& button = QString());
    bool chooseProject();
    bool upload(const QString& path, QString& fileId, const QString& button = QString());

    tav::CloudHandle client;
    QMap<QString, QString> fileTypes; ///< from the suffix in lower case to the platform's support type
    QClipboard* clipboard;
    QString account;
    QString fourthText;
    QString currentProjectName;
    QString currentProjectId;

    QLineEdit* pathEdit;
    QComboBox* typeCombo;
    QComboBox* anonymousExpiry;
    QComboBox* friendsExpiry;
    QComboBox* groupsExpiry;
    QLineEdit* codeEdit;
    QLabel* friendsCaption;
    QLabel* groupsCaption;
    tav::RecordTable* friendsTable;
    tav::RecordTable* groupsTable;
    QList<QWidget*> pages; ///< one for each mode
    QList<QPushButton*> shareButtons; ///< one on each page
    int mode = 0;
    QPushButton* extractButton;
};
