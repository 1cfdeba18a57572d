// SPDX-License-Identifier: MIT
#pragma once

#include "features/Guessing.h"
#include "http/Routes.h"
#include "store/Database.h"

namespace local_platform {

/// Refuses a group that the user neither owns nor is in, as if it did not exist.
void requireGroup(Database::Work& db, long long user, long long group);

/// Groups of accounts. The owner stays the owner even without being a member, so that a group whose members
/// were all removed can still be deleted.
class Groups
{
public:
    Groups(Database& database, const Clock& clock);

    void addTo(Routes& routes);

private:
    Json saveOrUpdate(Call& call);
    Json remove(Call& call);
    Json list(Call& call);
    Json listMembers(Call& call);
    Json inviteCode(Call& call);
    Json join(Call& call);
    Json leave(Call& call);
    Json removeMembers(Call& call);

    Database& database_;
    Guessing guessing_; ///< of invitation codes
};

} // namespace local_platform
