// SPDX-License-Identifier: MIT
#pragma once

#include "crypto/AccountCipher.h"
#include "net/BuildConstants.h"
#include "ui/account/AccountFile.h"

/// \file
/// The account file as a text: the names, the passwords in clear and the flags, separated by "|", and the
/// entries of each list by blanks. A flag that was never set is read as "-".

inline void remember(const QString& text)
{
    const auto list = [&](int i) { return text.section('|', i, i).split(' ', Qt::SkipEmptyParts); };
    QStringList passwords = list(1);
    for (QString& password : passwords)
        password = aesEncryptText(password, tav::accountCipherKey(), tav::accountCipherKey());
    writeAccountFile({list(0), passwords, list(2)});
}

inline QString remembered()
{
    AccountLists lists;
    readAccountFile(lists);
    for (QString& password : lists.passwords)
        password = aesDecryptText(password, tav::accountCipherKey(), tav::accountCipherKey());
    for (QString& flag : lists.rememberFlags)
        if (flag.isNull())
            flag = "-";
    return lists.userNames.join(' ') + '|' + lists.passwords.join(' ') + '|' + lists.rememberFlags.join(' ');
}
