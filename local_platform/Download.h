// SPDX-License-Identifier: MIT
#pragma once

#include "Database.h"
#include "FileStore.h"

#include <functional>
#include <string>

namespace local_platform {

/// A file on its way out.
struct Download
{
    OpenFile file;
    std::string sha256; ///< of its content, in Base64
};

/// Opens the file of the row of \a table that \a find yields, with its "stored_name" and "sha256".
Download openDownload(Database& database, const FileStore& files, const std::string& table,
    const std::function<Json(Database::Work&)>& find);

} // namespace local_platform
