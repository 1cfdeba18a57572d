// SPDX-License-Identifier: MIT
#pragma once

#include "http/Download.h"
#include "store/Database.h"

#include <functional>
#include <optional>
#include <string>

namespace local_platform {

/// Which file a request is for.
struct WantedFile
{
    std::string storedName;
    std::optional<std::string> sha256; ///< none of a file that could not be read when the digests were taken

    /// Reads "stored_name, sha256".
    static WantedFile from(Database::Row& row) { return {row.text(), row.textOrNull()}; }
};

/// Opens the file that \a find yields.
Download openDownload(
    Database& database, const FileStore& files, const std::function<WantedFile(Database::Work&)>& find);

} // namespace local_platform
