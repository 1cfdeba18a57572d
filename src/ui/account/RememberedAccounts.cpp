// SPDX-License-Identifier: MIT
#include "ui/account/RememberedAccounts.h"

#include "crypto/AccountCipher.h"
#include "net/BuildConstants.h"

namespace tav {

namespace {

constexpr int mostAccounts = 5;

QString enciphered(const QString& password)
{
    return aesEncryptText(password, accountCipherKey(), accountCipherKey());
}

QString deciphered(const QString& password)
{
    return aesDecryptText(password, accountCipherKey(), accountCipherKey());
}

void prependAtMost(QStringList& list, const QString& text)
{
    list.prepend(text);
    if (list.size() > mostAccounts)
        list.removeLast();
}

void moveToFront(QStringList& list, int index, const QString& text)
{
    if (index < list.size())
        list.removeAt(index);
    list.prepend(text);
}

} // namespace

void RememberedAccounts::putInFront(const QString& name, const QString& password, const QString& flag)
{
    // An entry that was enciphered under another key is kept as what this key makes of it.
    for (QString& entry : lists.passwords)
        entry = enciphered(deciphered(entry));

    // The password is kept whatever the flag says; the flag decides whether it is filled in again.
    QString newPassword = password;
    if (lists.userNames.contains(name)) {
        for (int i = 0; i < lists.userNames.size(); ++i) {
            if (lists.userNames.at(i) != name)
                continue;
            newPassword = enciphered(newPassword);
            moveToFront(lists.userNames, i, name);
            moveToFront(lists.passwords, i, newPassword);
            moveToFront(lists.rememberFlags, i, flag);
        }
    } else if (!name.isEmpty()) {
        prependAtMost(lists.userNames, name);
        prependAtMost(lists.passwords, enciphered(newPassword));
        prependAtMost(lists.rememberFlags, flag);
    }
}

QString RememberedAccounts::passwordOf(int index) const
{
    return isFilledIn(index) ? deciphered(lists.passwords.value(index)) : QString();
}

} // namespace tav
