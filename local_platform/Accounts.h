// SPDX-License-Identifier: MIT
#pragma once

#include "Codes.h"
#include "Database.h"
#include "Options.h"
#include "Routes.h"
#include "Tokens.h"

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

/// The account with this user name, phone number or e-mail address.
std::optional<long long> findUser(Database::Work& db, const std::string& login);
/// Refuses what exists already, in words that clients look for.
void addUser(Database::Work& db, const NewAccount& account, const std::string& passwordHash);

/// Signing in and out, registration, password reset. What clients send as a password is enciphered the same
/// way each time, so the platform takes that text for the password.
class Accounts
{
public:
    Accounts(Database& database, Tokens& tokens, Codes& codes, const Options& options);

    void addTo(Routes& routes);

private:
    Json signIn(Call& call);
    Json signInByCode(Call& call);
    Json refresh(Call& call);
    Json registerAccount(const NewAccount& account, const std::string& address, const std::string& code);
    Json resetPassword(Call& call);

    Database& database_;
    Tokens& tokens_;
    Codes& codes_;
    const Options& options_;
};

} // namespace local_platform
