// SPDX-License-Identifier: MIT
#pragma once

#include "base/Clock.h"
#include "http/Envelope.h"
#include "store/Database.h"

#include <string>

namespace local_platform {

/// Access tokens, each with the refresh token that came with it.
class Tokens
{
public:
    Tokens(Database& database, const Clock& clock, long long lifetime);

    /// A new pair for the user, as clients expect a token reply.
    Json issue(Database::Work& db, long long user) const;
    /// A new pair for the one that the refresh token belongs to, which ends with this.
    Json refresh(const std::string& refreshToken);
    /// The token's user; refuses a token that is unknown or has ended.
    long long userOf(const std::string& token);
    /// The reply to a token check.
    Json check(const std::string& token);
    void end(const std::string& token);
    void endAllOf(Database::Work& db, long long user) const;

private:
    Database& database_;
    const Clock& clock_;
    long long lifetime_;
};

} // namespace local_platform
