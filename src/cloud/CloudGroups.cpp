// SPDX-License-Identifier: MIT
#include "cloud/CloudFileManger_p.h"

bool CloudFileManger::CreateGroup(QString groupName)
{
    return d->postJson("/project/cloudProjectGroup/saveOrUpdate", {{"groupName", groupName}});
}

bool CloudFileManger::deleteGroup(QString id)
{
    return d->remove("/project/cloudProjectGroup/delete", "id=" + id);
}

bool CloudFileManger::SearchGroup(QList<CloudGroupInfo>& groups)
{
    ResultMap reply;
    if (!d->get("/project/cloudProjectGroupUser/listUserGroups", QString(), reply))
        return false;
    for (const QVariantMap& item : replyList(reply, {"id", "groupName", "createUser"}))
        groups.append({replyText(item, "id"), replyText(item, "groupName"), replyText(item, "createUser"),
            replyText(item, "inviteCode")});
    return true;
}

bool CloudFileManger::SearchGroupMember(QString groupId, QVector<CloudGroupMemberInfo>& members)
{
    ResultMap reply;
    if (!d->get("/project/cloudProjectGroupUser/listGroupUsers", "groupId=" + groupId, reply))
        return false;
    for (const QVariantMap& item : replyList(reply, {"id", "groupId", "username"}))
        members.append({replyText(item, "id"), replyText(item, "groupId"), replyText(item, "username"),
            item.value(QStringLiteral("adminFlag")).toInt()});
    return true;
}

bool CloudFileManger::GetInviteCode(QString groupId, QString& inviteCode)
{
    ResultMap reply;
    if (!d->get("/project/cloudProjectGroupUser/getInviteCode", "groupId=" + groupId, reply))
        return false;
    inviteCode = replyText(reply, "data");
    return true;
}

bool CloudFileManger::InviteToGroup(QString inviteCode)
{
    return d->postForm("/project/cloudProjectGroupUser/inviteToGroup", {{"inviteCode", inviteCode}});
}

bool CloudFileManger::OutGroup(QString groupId)
{
    return d->get("/project/cloudProjectGroupUser/outGroup", "groupId=" + groupId);
}

bool CloudFileManger::RemoveGroupMember(QString groupId, QString usernames)
{
    return d->remove(
        "/project/cloudProjectGroupUser/removeGroupMember", "groupId=" + groupId + "&usernames=" + usernames);
}
