// SPDX-License-Identifier: MIT
#pragma once

#include "base/Clock.h"
#include "features/Guessing.h"
#include "http/Routes.h"
#include "store/Database.h"
#include "store/FileStore.h"

#include <string>

namespace local_platform {

/// Files shared for a number of hours: with whoever has the extraction code, with accounts, or with a group.
/// Those who are in a group now are the ones who have its shares.
class Sharing
{
public:
    Sharing(Database& database, const FileStore& files, const Clock& clock);

    void addTo(Routes& routes);

private:
    Json upload(Call& call);
    Json shareAnonymously(Call& call);
    Json shareWithAccounts(Call& call);
    Json shareWithGroup(Call& call);
    Json extract(Call& call);
    Json listProjects(Call& call);
    Json listFiles(Call& call);
    Download download(Call& call);

    /// A new share of the form's files, which must be the user's and of the form's project.
    long long addShare(Database::Work& db, long long user, const Fields& form) const;

    Database& database_;
    const FileStore& files_;
    const Clock& clock_;
    Guessing guessing_; ///< of extraction codes
};

} // namespace local_platform
