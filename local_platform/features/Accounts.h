// SPDX-License-Identifier: MIT
#pragma once

#include "base/Options.h"
#include "features/Codes.h"
#include "features/RecentPasswords.h"
#include "features/Tokens.h"
#include "features/Users.h"
#include "http/Routes.h"
#include "store/Database.h"

#include <string>

namespace local_platform {

/// Signing in and out, registration, password reset. What clients send as a password is enciphered the same
/// way each time, so the platform takes that text for the password.
class Accounts
{
public:
    Accounts(Database& database, Tokens& tokens, Codes& codes, const Clock& clock, const Options& options);

    void addTo(Routes& routes);

private:
    Json signIn(Call& call);
    Json signInByCode(Call& call);
    Json refresh(Call& call);
    Json registerAccount(const NewAccount& account, const std::string& address, const std::string& code,
        const std::string& client);
    Json resetPassword(Call& call);

    Database& database_;
    Tokens& tokens_;
    Codes& codes_;
    const Options& options_;
    RecentPasswords recent_;
    Guessing guessing_;
};

} // namespace local_platform
