// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

/// The accounts that signed in with a password, the most recent first, as three parallel lists. A damaged
/// file may leave them of unequal length.
struct AccountLists
{
    QStringList userNames;
    QStringList passwords; ///< in the file: as aesEncryptText() gives them
    QStringList rememberFlags; ///< "true", "false", or empty when the user never chose
};

/// Replaces \a accounts with what "./AccountManage.bin" holds. Does nothing when there is no such file or it
/// has another format. In a damaged one, the list that is cut or cannot be true and all after it become
/// empty; no more memory is taken than the file's size justifies.
void readAccountFile(AccountLists& accounts);

/// Writes "./AccountManage.bin", readable by its owner only, whatever its permissions were before. A symbolic
/// link of that name stays, and the file that it leads to is written. A file that cannot be written whole
/// stays as it was, without a message; so does one in a folder that takes no new file, or on a file system
/// without permissions. Of two writers at once, the later one's file remains.
void writeAccountFile(const AccountLists& accounts);
