// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

/// The accounts that signed in with a password, the most recent first: three lists side by side. A damaged
/// file may leave them of unequal length.
struct AccountLists
{
    QStringList userNames;
    QStringList passwords; ///< in the file: as aesEncryptText() gives them
    QStringList rememberFlags; ///< "true", "false", or empty when nobody ever said
};

/// Replaces \a accounts with what "./AccountManage.bin" holds. Does nothing when there is no such file or it
/// is not ours. In a damaged one, the list that is cut or impossible and all after it come back empty; never
/// is more memory taken than the file's size warrants.
void readAccountFile(AccountLists& accounts);

/// Writes "./AccountManage.bin", for its owner's eyes only, whoever could read it before. A symbolic link of
/// that name stays, and the file that it leads to is written. A file that cannot be written whole stays as it
/// was, silently; so does one in a folder that takes no new file, or on a file system without owners' rights.
/// Of two writers at once, the later one's file remains.
void writeAccountFile(const AccountLists& accounts);
