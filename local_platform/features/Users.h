// SPDX-License-Identifier: MIT
#pragma once

#include "store/Database.h"

#include <optional>
#include <string>

namespace local_platform {

struct NewAccount
{
    std::string username;
    std::string password; ///< as clients send it: enciphered
    std::string phone; ///< empty: none
    std::string mail; ///< empty: none
};

/// Refuses a name that splits in lists, or passes for another's phone number or e-mail address, or that
/// people cannot tell from what it seems to be.
void requireUsableName(const std::string& name, const std::string& phone);
/// Refuses an address in which people do not see what they read.
void requireUsableMail(const std::string& mail);
/// The account with this user name, phone number or e-mail address. Names differ by more than case.
std::optional<long long> findUser(Database::Work& db, const std::string& login);
/// Refuses what exists already, in words that clients look for.
void addUser(Database::Work& db, const NewAccount& account, const std::string& passwordHash);

} // namespace local_platform
