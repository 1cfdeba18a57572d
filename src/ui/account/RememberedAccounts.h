// SPDX-License-Identifier: MIT
#pragma once

#include "ui/account/AccountFile.h"

namespace tav {

/// The accounts that signed in with a password, the most recent first. The passwords are enciphered in here
/// as they are in the file.
class RememberedAccounts
{
public:
    /// Takes those of the account file, or nobody.
    void load() { readAccountFile(lists); }
    void save() const { writeAccountFile(lists); }

    /// For a sign-in that succeeded: as a new account, which drops the last of five, or with what is new
    /// about one that is known. Names that differ in letter case are different accounts. \param flag "true"
    /// when the password is to be filled in again, "false", or empty when nobody ever said
    void putInFront(const QString& name, const QString& password, const QString& flag);

    const QStringList& userNames() const { return lists.userNames; }
    /// Whether there is a password at all, which a damaged file may not have for all its names.
    bool hasPassword(int index) const { return index < lists.passwords.size(); }
    QString flagOf(int index) const { return lists.rememberFlags.value(index); }
    bool isFilledIn(int index) const { return flagOf(index) == QLatin1String("true"); }
    /// The password in clear, of an account where it is filled in; else empty.
    QString passwordOf(int index) const;

private:
    AccountLists lists;
};

} // namespace tav
