// SPDX-License-Identifier: MIT
#include "ui/cloudspace/GroupManageDlg.h"

#include "core/Screen.h"
#include "net/CloudQuery.h"
#include "ui/ElidedLabel.h"
#include "ui/ScopedDialog.h"
#include "ui/Steps.h"
#include "ui/cloudspace/CreateGroupDlg.h"
#include "ui/cloudspace/JoinGroupDlg.h"

#include <QClipboard>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStandardItemModel>
#include <QTreeView>

#include <algorithm>

using namespace tav;

namespace {

/// What identifies an item. Its text does not: it is a name that any user may have chosen.
enum Role
{
    GroupIdRole = Qt::UserRole, ///< of a group
    UserNameRole, ///< of a member
    ManagerRole ///< of a member: whether it manages the group
};

using Members = QVector<CloudFileManger::CloudGroupMemberInfo>;

bool isManager(const CloudFileManger::CloudGroupMemberInfo& member)
{
    return member.adminFlag == 1;
}

QIcon treeIcon(const QString& name)
{
    const QString file = ":/tav_cloud_platform_sdk/Resources/" + name;
    QIcon icon(file);
    // Not tinted with the colour of the selection, in which it would vanish.
    icon.addFile(file, QSize(), QIcon::Selected);
    return icon;
}

QStandardItem* newItem(const QString& text, const QIcon& icon)
{
    auto* item = new QStandardItem(icon, text);
    item->setEditable(false);
    item->setToolTip(plainToolTip(text));
    return item;
}

} // namespace

GroupManageDlg::GroupManageDlg(
    CloudFileManger* manager, QClipboard* systemClipboard, QString ownAccount, QWidget* parent)
    : Dialog(parent)
    , client(handleOn(manager))
    , clipboard(systemClipboard)
    , account(std::move(ownAccount))
    , model(new QStandardItemModel(this))
    , tree(new QTreeView(this))
    , rootIcon(treeIcon("folder.png"))
    , groupIcon(treeIcon("202.png"))
    , managerIcon(treeIcon("201.png"))
    , memberIcon(treeIcon("200.png"))
    , hint(new QLabel(this))
{
    setWindowTitle(tr("Group management"));
    tree->setModel(model);
    tree->setAccessibleName(tr("Groups"));
    tree->setTextElideMode(Qt::ElideMiddle); // the end says whose id it is, or who manages the group

    auto* operations = new QGroupBox(tr("Group operating"), this);
    auto* operationButtons = new QVBoxLayout(operations);
    const auto addOperation = [&](const QString& text, void (GroupManageDlg::*slot)()) {
        auto* button = new QPushButton(text, operations);
        operationButtons->addWidget(button);
        connect(button, &QPushButton::clicked, this, slot);
    };
    addOperation(tr("Generating invitation codes"), &GroupManageDlg::_onGetInvitationCode);
    addOperation(tr("Join the group"), &GroupManageDlg::_onJoinGroup);
    addOperation(tr("Create group"), &GroupManageDlg::_onCreateGroup);
    addOperation(tr("Delete the group"), &GroupManageDlg::_onDelGroup);
    addOperation(tr("Quit the group"), &GroupManageDlg::_onExitGroup);
    addOperation(tr("Removing a group member"), &GroupManageDlg::_onDelGroupMember);
    operationButtons->addStretch();
    auto* closeButton = new QPushButton(tr("Close"), this);
    closeButton->setDefault(true);
    connect(closeButton, &QPushButton::clicked, this, &QDialog::accept);

    hint->setWordWrap(true);
    hint->hide();
    auto* treeAndHint = new QVBoxLayout;
    treeAndHint->addWidget(tree, 1);
    treeAndHint->addWidget(hint);
    auto* contents = new QHBoxLayout;
    contents->addLayout(treeAndHint, 1);
    contents->addWidget(operations);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(contents);
    layout->addWidget(closeButton, 0, Qt::AlignRight);
    resize(int(dpi_scaled(620.0)), int(dpi_scaled(320.0)));
    onceShown(this, [this] { load(); });
}

void GroupManageDlg::load()
{
    model->clear();
    model->setHorizontalHeaderLabels({tr("Groups")});
    QList<CloudFileManger::CloudGroupInfo> groups;
    const Answer answer = ask(this, client, tr("Loading the groups..."),
        [&groups](CloudFileManger& cloud) { return cloud.SearchGroup(groups); });
    if (answer.outcome == Outcome::Refused) {
        hint->setText(tr("The groups could not be loaded."));
        hint->show();
        fail(this, tr("Failed to query group information!"), QString(), answer.reason);
    }
    if (answer.outcome != Outcome::Done)
        return;
    hint->setText(tr("You are in no group yet. Create one, or join one by its invitation code."));
    hint->setVisible(groups.isEmpty());
    auto* root = newItem(tr("My groups"), rootIcon);
    model->appendRow(root);
    for (const auto& group : groups) {
        auto* item = newItem(tr("%1(ID:%2)").arg(group.groupName, group.id), groupIcon);
        item->setData(group.id, GroupIdRole);
        root->appendRow(item);
        if (!loadMembers(item))
            return;
    }
    tree->expandAll();
}

/// False when the window was closed or destroyed meanwhile.
bool GroupManageDlg::loadMembers(QStandardItem* group)
{
    Members members;
    const QString id = group->data(GroupIdRole).toString();
    const Answer answer = ask(this, client, tr("Loading the groups..."),
        [&](CloudFileManger& cloud) { return cloud.SearchGroupMember(id, members); });
    if (answer.outcome == Outcome::Refused)
        return failOnMembers(answer.reason);
    if (answer.outcome == Outcome::Abandoned)
        return false;
    for (const auto& member : members) {
        const bool manages = isManager(member);
        auto* item = manages ? newItem(member.username + " - " + tr("group manager"), managerIcon)
                             : newItem(member.username, memberIcon);
        item->setData(member.username, UserNameRole);
        item->setData(manages, ManagerRole);
        group->appendRow(item);
    }
    return true;
}

/// False when the window was closed or destroyed meanwhile.
bool GroupManageDlg::failOnMembers(const QString& reason)
{
    return fail(this, tr("Failed to query a group member!"), QString(), reason);
}

/// Null when there is none.
QStandardItem* GroupManageDlg::selectedItem() const
{
    const QModelIndexList selected = tree->selectionModel()->selectedIndexes();
    return selected.isEmpty() ? nullptr : model->itemFromIndex(selected.first());
}

/// The selected group and whether the user manages it. Nothing when no group is selected, which \a complaint
/// then says, or the window was closed or destroyed.
std::optional<GroupManageDlg::SelectedGroup> GroupManageDlg::selectedGroup(const QString& complaint)
{
    const QStandardItem* item = selectedItem();
    const QString id = item ? item->data(GroupIdRole).toString() : QString();
    if (id.isEmpty()) {
        inform(this, complaint);
        return std::nullopt;
    }
    const std::optional<bool> owned = isOwner(id);
    return owned ? std::make_optional(SelectedGroup{id, *owned}) : std::nullopt;
}

/// Whether the user manages the group now; false too when the platform does not tell. Nothing when the window
/// was closed or destroyed meanwhile.
std::optional<bool> GroupManageDlg::isOwner(const QString& groupId)
{
    Members members;
    const Answer answer = ask(this, client, tr("Looking for the group's owner..."),
        [&](CloudFileManger& cloud) { return cloud.SearchGroupMember(groupId, members); });
    if (answer.outcome == Outcome::Abandoned
        || (answer.outcome == Outcome::Refused && !failOnMembers(answer.reason)))
        return std::nullopt;
    return std::any_of(members.cbegin(), members.cend(),
        [this](const auto& member) { return member.username == account && isManager(member); });
}

void GroupManageDlg::_onGetInvitationCode()
{
    const auto group = selectedGroup(
        tr("The group ID is invalid. Please click to select the group that needs to generate the "
           "invitation code."));
    if (!group)
        return;
    if (!group->owned) {
        inform(this,
            tr("The current user is not the group owner of the group, and the invitation code cannot be "
               "generated!"));
        return;
    }
    QString code;
    if (!perform(
            this, client, tr("Generating the invitation code..."),
            [&](CloudFileManger& cloud) { return cloud.GetInviteCode(group->id, code); },
            tr("Failed to generate invitation code!")))
        return;
    clipboard->setText(code);
    showCode(this, tr("Anonymous share"),
        tr("Invitation code:") + code + "\n" + tr("The invitation code is copied to the clipboard."), code);
}

void GroupManageDlg::_onJoinGroup()
{
    ScopedDialog<JoinGroupDlg> form(this, clipboard);
    if (!form.accepted())
        return;
    const auto request = [code = form->invitationCode()](
                             CloudFileManger& cloud) { return cloud.InviteToGroup(code); };
    if (perform(this, client, tr("Joining the group..."), request, tr("Join the group failed!"))
        && inform(this, tr("Join the group successfully!")))
        load();
}

void GroupManageDlg::_onCreateGroup()
{
    ScopedDialog<CreateGroupDlg> form(this);
    if (!form.accepted())
        return;
    const auto request = [name = form->groupName()](
                             CloudFileManger& cloud) { return cloud.CreateGroup(name); };
    if (perform(this, client, tr("Creating the group..."), request, tr("Failed to create group!"))
        && inform(this, tr("Create group successfully!")))
        load();
}

void GroupManageDlg::_onDelGroup()
{
    const auto group =
        selectedGroup(tr("The group ID is invalid. Please click to select the group to be deleted."));
    if (!group)
        return;
    if (!group->owned) {
        inform(this, tr("No operation permission!"));
        return;
    }
    if (confirm(this, tr("Do you want to delete this group?")))
        deleteWithMembers(group->id);
}

/// Removes the members first, the manager included. All in one request function: when the window is closed in
/// between, the group must not be left half deleted.
void GroupManageDlg::deleteWithMembers(const QString& groupId)
{
    const auto request = [groupId](CloudFileManger& cloud) {
        Members members;
        if (!cloud.SearchGroupMember(groupId, members))
            return false;
        for (const auto& member : members)
            if (!cloud.RemoveGroupMember(groupId, cloudQueryValue(member.username)))
                return false;
        return cloud.deleteGroup(groupId);
    };
    if (perform(this, client, tr("Deleting the group..."), request, tr("Delete failed!"))
        && inform(this, tr("Delete successfully!")))
        load();
}

void GroupManageDlg::_onExitGroup()
{
    const auto group =
        selectedGroup(tr("The group ID is invalid. Please click to select the group to exit!"));
    if (!group)
        return;
    if (group->owned) {
        if (confirm(this,
                tr("The current user is the group owner of the group. If you quit the group, you will delete "
                   "the group. Do you want to quit the group?")))
            deleteWithMembers(group->id);
        return;
    }
    if (!confirm(this, tr("Confirm exit?")))
        return;
    const auto request = [id = group->id](CloudFileManger& cloud) { return cloud.OutGroup(id); };
    if (perform(this, client, tr("Leaving the group..."), request, tr("Failed to exit the group!"))
        && inform(this, tr("Exit group successfully!")))
        load();
}

void GroupManageDlg::_onDelGroupMember()
{
    const QStandardItem* member = selectedItem();
    if (!member || !member->data(UserNameRole).isValid()) {
        warn(this, tr("Select a group member."));
        return;
    }
    const QString groupId = member->parent()->data(GroupIdRole).toString();
    const QString userName = member->data(UserNameRole).toString();
    const bool manages = member->data(ManagerRole).toBool();
    const std::optional<bool> owner = isOwner(groupId);
    if (!owner)
        return;
    if (!*owner || manages) {
        warn(this, *owner ? tr("Unable to remove group master!") : tr("No operation permission!"));
        return;
    }
    const auto request = [&](CloudFileManger& cloud) {
        return cloud.RemoveGroupMember(groupId, cloudQueryValue(userName));
    };
    if (perform(this, client, tr("Removing the group member..."), request,
            tr("Failed to delete a group member!")))
        load();
}
