// SPDX-License-Identifier: MIT
#include "Commands.h"
#include "cloud/CloudFileManger.h"
#include "net/CloudQuery.h"

bool friends(const QStringList&)
{
    CloudFileManger client = clientOn();
    QList<CloudFileManger::CloudAddressBookInfo> all;
    if (!succeeded(client.SearchAddressBookList(all), "The address book could not be read", client))
        return false;
    for (const auto& one : qAsConst(all))
        say(QStringList{one.id, one.friendUser, one.friendPhone, one.friendRemark, one.friendUnit}.join(
            '\t'));
    return true;
}

bool addFriend(const QStringList& phoneNameCompany)
{
    CloudFileManger client = clientOn();
    return succeeded(client.AddToAddressBook(phoneNameCompany[0], phoneNameCompany[1], phoneNameCompany[2]),
        "The friend was not added", client);
}

bool removeFriend(const QStringList& id)
{
    CloudFileManger client = clientOn();
    return succeeded(client.DelFromAddressBook(cloudQueryValue(id[0])), "The friend was not removed", client);
}

bool groups(const QStringList&)
{
    CloudFileManger client = clientOn();
    QList<CloudFileManger::CloudGroupInfo> all;
    if (!succeeded(client.SearchGroup(all), "The groups could not be listed", client))
        return false;
    for (const auto& group : qAsConst(all)) {
        say(QStringList{group.id, group.groupName, group.createUser}.join('\t'));
        QVector<CloudFileManger::CloudGroupMemberInfo> members;
        if (!succeeded(
                client.SearchGroupMember(group.id, members), "The members could not be listed", client))
            return false;
        for (const auto& member : qAsConst(members))
            say("\t" + member.username + (member.adminFlag != 0 ? "\tmanager" : ""));
    }
    return true;
}

bool createGroup(const QStringList& name)
{
    CloudFileManger client = clientOn();
    return succeeded(client.CreateGroup(name[0]), "The group was not created", client);
}

bool invite(const QStringList& group)
{
    CloudFileManger client = clientOn();
    QString code;
    if (!succeeded(client.GetInviteCode(cloudQueryValue(group[0]), code), "There is no code", client))
        return false;
    say(code);
    return true;
}

bool join(const QStringList& code)
{
    CloudFileManger client = clientOn();
    return succeeded(client.InviteToGroup(code[0]), "Joining failed", client);
}

bool leave(const QStringList& group)
{
    CloudFileManger client = clientOn();
    return succeeded(client.OutGroup(cloudQueryValue(group[0])), "Leaving failed", client);
}
