// SPDX-License-Identifier: MIT
#include "cloud/CloudFileManger_p.h"

bool CloudFileManger::SearchAddressBookList(QList<CloudAddressBookInfo>& list)
{
    ResultMap reply;
    if (!d->get("/project/cloudAddressBook/list", QString(), reply))
        return false;
    for (const QVariantMap& item : replyList(reply, {"friendUser", "friendPhone"}))
        list.append({replyText(item, "id"), replyText(item, "friendUser"), replyText(item, "friendPhone"),
            replyText(item, "friendRemark"), replyText(item, "friendUnit")});
    return true;
}

bool CloudFileManger::AddToAddressBook(QString friendPhone, QString friendRemark, QString friendUnit)
{
    return d->postForm("/project/cloudAddressBook/add",
        {{"friendPhone", friendPhone}, {"friendRemark", friendRemark}, {"friendUnit", friendUnit}});
}

bool CloudFileManger::DelFromAddressBook(QString id)
{
    return d->remove("/project/cloudAddressBook/delete", "id=" + id);
}
