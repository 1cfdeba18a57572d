// SPDX-License-Identifier: MIT
#include "cloud/CloudFileManger_p.h"

bool CloudFileManger::SearchAddressBookList(QList<CloudAddressBookInfo>& list)
{
    ResultMap reply;
    if (!d->get("/project/cloudAddressBook/list", QString(), reply))
        return false;
    for (const QVariantMap& item : listed(reply, {"friendUser", "friendPhone"}))
        list.append({text(item, "id"), text(item, "friendUser"), text(item, "friendPhone"),
            text(item, "friendRemark"), text(item, "friendUnit")});
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
