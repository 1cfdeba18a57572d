// SPDX-License-Identifier: MIT
#include "store/Inventory.h"

#include "base/Text.h"

namespace local_platform {

KnownFile KnownFile::from(Database::Row& row)
{
    return {row.text(), row.text(), row.number(), row.textOrNull(), row.text()};
}

std::vector<KnownFile> knownFiles(Database::Work& db)
{
    return db.all<KnownFile>(
        "select stored_name, file_name, size, sha256, 'the backup of project ' || project_id from backups"
        " union all select stored_name, original_name, size, sha256, 'shared file ' || id from shared_files");
}

bool isKnown(Database::Work& db, const std::string& storedName)
{
    return db
        .number("select 1 from backups where stored_name = :backup"
                " union all select 1 from shared_files where stored_name = :shared",
            {storedName, storedName})
        .has_value();
}

std::string TrashedFile::nameInTrash() const
{
    return timeText(since) + '-' + storedName;
}

TrashedFile TrashedFile::from(Database::Row& row)
{
    return {row.text(), row.number(), row.text(), row.number(), row.textOrNull()};
}

std::vector<TrashedFile> trashedFiles(Database::Work& db)
{
    return db.all<TrashedFile>("select stored_name, trashed_at, file_name, size, sha256 from trash");
}

} // namespace local_platform
