// SPDX-License-Identifier: MIT
#include "cloud/CloudFileManger_p.h"

using namespace tav;

bool CloudFileManger::CreateGroup(QString groupName)
{
    return Call(d).postJson("/project/cloudProjectGroup/saveOrUpdate", {{"groupName", groupName}});
}

bool CloudFileManger::deleteGroup(QString id)
{
    return Call(d).remove("/project/cloudProjectGroup/delete", "id=" + id);
}

bool CloudFileManger::SearchGroup(QList<CloudGroupInfo>& groups)
{
    Call call(d);
    if (!call.get("/project/cloudProjectGroupUser/listUserGroups"))
        return false;
    for (const QVariantMap& item : replyList(call.reply, {"id", "groupName", "createUser"}))
        groups.append({replyText(item, "id"), replyText(item, "groupName"), replyText(item, "createUser"),
            replyText(item, "inviteCode")});
    return true;
}

bool CloudFileManger::SearchGroupMember(QString groupId, QVector<CloudGroupMemberInfo>& members)
{
    Call call(d);
    if (!call.get("/project/cloudProjectGroupUser/listGroupUsers", "groupId=" + groupId))
        return false;
    for (const QVariantMap& item : replyList(call.reply, {"id", "groupId", "username"}))
        members.append({replyText(item, "id"), replyText(item, "groupId"), replyText(item, "username"),
            item.value(QStringLiteral("adminFlag")).toInt()});
    return true;
}

bool CloudFileManger::GetInviteCode(QString groupId, QString& inviteCode)
{
    Call call(d);
    if (!call.get("/project/cloudProjectGroupUser/getInviteCode", "groupId=" + groupId))
        return false;
    inviteCode = replyText(call.reply, "data");
    return true;
}

bool CloudFileManger::InviteToGroup(QString inviteCode)
{
    return Call(d).postForm("/project/cloudProjectGroupUser/inviteToGroup", {{"inviteCode", inviteCode}});
}

bool CloudFileManger::OutGroup(QString groupId)
{
    return Call(d).get("/project/cloudProjectGroupUser/outGroup", "groupId=" + groupId);
}

bool CloudFileManger::RemoveGroupMember(QString groupId, QString usernames)
{
    return Call(d).remove(
        "/project/cloudProjectGroupUser/removeGroupMember", "groupId=" + groupId + "&usernames=" + usernames);
}
