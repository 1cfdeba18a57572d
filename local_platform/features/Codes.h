// SPDX-License-Identifier: MIT
#pragma once

#include "base/Clock.h"
#include "features/Guessing.h"
#include "http/Routes.h"
#include "store/Database.h"
#include "store/Outbox.h"

#include <string>

namespace local_platform {

/// One-time verification codes: each for one address, one purpose and the client that asked for it, with an
/// end and a limited number of tries.
class Codes
{
public:
    enum class Purpose
    {
        SignIn, ///< serves registration too
        Reset
    };

    Codes(Database& database, const Clock& clock, Outbox& outbox, long long lifetime);

    void addTo(Routes& routes);
    /// Uses the code up as part of the caller's work. A wrong one costs a try, whatever the caller does next:
    /// a client has tries of its own at the code that it asked for.
    void redeem(Database::Work& db, const std::string& address, Purpose purpose, const std::string& code,
        const std::string& client);

private:
    Json send(const std::string& way, const std::string& address, Purpose purpose, const std::string& client);

    Database& database_;
    const Clock& clock_;
    Outbox& outbox_;
    long long lifetime_;
    Guessing guessing_;
    Budgets toClients_; ///< codes that one client asked for
    Budgets toAddresses_; ///< codes that were sent to one address
};

} // namespace local_platform
