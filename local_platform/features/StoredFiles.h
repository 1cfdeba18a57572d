// SPDX-License-Identifier: MIT
#pragma once

#include "http/Download.h"
#include "store/Database.h"

#include <functional>
#include <optional>
#include <string>

namespace local_platform {

/// What the database knows of an uploaded file.
struct StoredFile
{
    std::string name; ///< on disk
    std::optional<std::string> sha256; ///< none of what was stored before digests were kept

    /// Reads "stored_name, sha256".
    static StoredFile from(Database::Row& row) { return {row.text(), row.textOrNull()}; }
};

/// Opens the file of the row of \a table that \a find yields.
Download openDownload(Database& database, const FileStore& files, const std::string& table,
    const std::function<StoredFile(Database::Work&)>& find);

} // namespace local_platform
