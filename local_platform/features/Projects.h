// SPDX-License-Identifier: MIT
#pragma once

#include "http/Routes.h"
#include "store/Database.h"
#include "store/FileStore.h"
#include "store/Trash.h"

namespace local_platform {

/// Refuses a project that is not the user's.
void requireOwnProject(Database::Work& db, long long user, long long project);

/// Cloud projects, each with at most one backup: the last one. The one before goes to the trash.
class Projects
{
public:
    Projects(Database& database, const FileStore& files, const Trash& trash);

    void addTo(Routes& routes);

private:
    Json add(Call& call);
    Json list(Call& call);
    Json upload(Call& call);
    Download download(Call& call);

    Database& database_;
    const FileStore& files_;
    const Trash& trash_;
};

} // namespace local_platform
