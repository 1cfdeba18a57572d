// SPDX-License-Identifier: MIT
#pragma once

#include "base/Budgets.h"
#include "base/Clock.h"
#include "base/Refusal.h"

#include <string>

namespace local_platform {

/// Limits wrong guesses at what several clients may try to get into: those of one client at one account, of
/// one client at all, and of all clients at one account. A client that got in before is bound by the first
/// alone, so that nobody who guesses from elsewhere locks an account's user out of the machine that he works
/// at.
class Guessing
{
public:
    explicit Guessing(const Clock& clock)
        : clock_(clock)
    {
    }

    /// Refused when there were too many wrong guesses.
    void requireMay(const std::string& account, const std::string& client) const
    {
        const long long now = clock_.now();
        const std::string pair = account + '\n' + client;
        if (pairs_.isSpent(pair, now)
            || (!familiar_.isSpent(pair, now)
                && (accounts_.isSpent(account, now) || clients_.isSpent(client, now))))
            throw Refusal("Too many wrong attempts; try again later", 429);
    }

    void wrong(const std::string& account, const std::string& client)
    {
        const long long now = clock_.now();
        pairs_.spend(account + '\n' + client, now);
        accounts_.spend(account, now);
        clients_.spend(client, now);
    }

    void right(const std::string& account, const std::string& client)
    {
        const std::string pair = account + '\n' + client;
        pairs_.forget(pair);
        familiar_.spend(pair, clock_.now());
    }

    bool isFamiliar(const std::string& account, const std::string& client) const
    {
        return familiar_.isSpent(account + '\n' + client, clock_.now());
    }

private:
    static constexpr long long quarterHour = 900;
    static constexpr long long month = 2592000;

    const Clock& clock_;
    Budgets pairs_{10, quarterHour};
    Budgets accounts_{100, quarterHour};
    Budgets clients_{100, quarterHour};
    Budgets familiar_{1, month};
};

} // namespace local_platform
