// SPDX-License-Identifier: MIT
#include "cloud/CloudFileManger_p.h"

using namespace tav;

bool CloudFileManger::SearchAddressBookList(QList<CloudAddressBookInfo>& list)
{
    Call call(d);
    if (!call.get("/project/cloudAddressBook/list"))
        return false;
    for (const QVariantMap& item : replyList(call.reply, {"friendUser", "friendPhone"}))
        list.append({replyText(item, "id"), replyText(item, "friendUser"), replyText(item, "friendPhone"),
            replyText(item, "friendRemark"), replyText(item, "friendUnit")});
    return true;
}

bool CloudFileManger::AddToAddressBook(QString friendPhone, QString friendRemark, QString friendUnit)
{
    return Call(d).postForm("/project/cloudAddressBook/add",
        {{"friendPhone", friendPhone}, {"friendRemark", friendRemark}, {"friendUnit", friendUnit}});
}

bool CloudFileManger::DelFromAddressBook(QString id)
{
    return Call(d).remove("/project/cloudAddressBook/delete", "id=" + id);
}
