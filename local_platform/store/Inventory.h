// SPDX-License-Identifier: MIT
#pragma once

#include "store/Database.h"

#include <optional>
#include <string>
#include <vector>

namespace local_platform {

/// What the database knows of a file that it was given.
struct KnownFile
{
    std::string storedName;
    std::string fileName; ///< as its user called it
    long long size;
    std::optional<std::string> sha256; ///< in Base64; none where it could not be taken yet
    std::string role; ///< what it is, for people

    static KnownFile from(Database::Row& row);
};

std::vector<KnownFile> knownFiles(Database::Work& db);
/// Whether a file in use has this stored name.
bool isKnown(Database::Work& db, const std::string& storedName);

/// A file that was superseded, and waits in the trash for its end.
struct TrashedFile
{
    std::string storedName;
    long long since;
    std::string fileName;
    long long size;
    std::optional<std::string> sha256;

    /// In the trash folder: its date first, so that people find their way.
    std::string nameInTrash() const;
    static TrashedFile from(Database::Row& row);
};

std::vector<TrashedFile> trashedFiles(Database::Work& db);

} // namespace local_platform
