// SPDX-License-Identifier: MIT
#include "Fuzz.h"

#include "ui/account/RememberedAccounts.h"

#include <QFile>

using namespace tav;

/// The input becomes the file of remembered accounts in the working folder.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    QFile file(QStringLiteral("AccountManage.bin"));
    require(file.open(QIODevice::WriteOnly) && file.write(bytesOf(data, size)) == qint64(size));
    file.close();
    RememberedAccounts accounts;
    accounts.load();
    for (int i = 0; i < accounts.userNames().size(); ++i)
        accounts.passwordOf(i);
    AccountLists read, again;
    readAccountFile(read);
    writeAccountFile(read);
    readAccountFile(again);
    require(read.userNames == again.userNames && read.passwords == again.passwords);
    require(read.rememberFlags == again.rememberFlags);
    return 0;
}
