// SPDX-License-Identifier: MIT
#pragma once

#include "cloud/CloudHandle.h"
#include "toolkit/Dialog.h"

#include <QIcon>
#include <QString>

#include <optional>

class QClipboard;
class QLabel;
class QStandardItem;
class QStandardItemModel;
class QTreeView;

/// The user's groups with their members, and everything that can be done with them.
class GroupManageDlg : public Dialog
{
    Q_OBJECT

public:
    /// Asks the platform for the groups and the members of each once it is shown.
    /// \param ownAccount the user's account name, which tells whose groups are the user's own
    GroupManageDlg(
        CloudFileManger* manager, QClipboard* systemClipboard, QString ownAccount, QWidget* parent);

private slots:
    void _onGetInvitationCode();
    void _onJoinGroup();
    void _onCreateGroup();
    void _onDelGroup();
    void _onExitGroup();
    void _onDelGroupMember();

private:
    struct SelectedGroup
    {
        QString id;
        bool owned;
    };

    void load();
    bool loadMembers(QStandardItem* group);
    bool failOnMembers(const QString& reason);
    QStandardItem* selectedItem() const;
    std::optional<SelectedGroup> selectedGroup(const QString& complaint);
    std::optional<bool> isOwner(const QString& groupId);
    void deleteWithMembers(const QString& groupId);

    tav::CloudHandle client;
    QClipboard* clipboard;
    QString account;
    QStandardItemModel* model;
    QTreeView* tree;
    QIcon rootIcon, groupIcon, managerIcon, memberIcon;
    QLabel* hint; ///< why the tree is empty
};
