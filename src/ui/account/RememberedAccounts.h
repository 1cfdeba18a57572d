// SPDX-License-Identifier: MIT
#pragma once

#include "ui/account/AccountFile.h"

namespace tav {

/// The accounts that signed in with a password, the most recent first. The passwords are kept enciphered, as
/// in the file.
class RememberedAccounts
{
public:
    /// Reads the account file, if there is one.
    void load() { readAccountFile(lists); }
    void save() const { writeAccountFile(lists); }

    /// Puts an account in front after it has signed in: a new one, which drops the last of five, or a known
    /// one, which gets the new password and flag. Names that differ in letter case are different accounts.
    /// \param flag "true" when the password is to be filled in again, "false", or empty when the user never
    /// chose
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
