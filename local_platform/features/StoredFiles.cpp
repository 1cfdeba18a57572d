// SPDX-License-Identifier: MIT
#include "features/StoredFiles.h"

#include <system_error>

namespace local_platform {

Download openDownload(
    Database& database, const FileStore& files, const std::function<WantedFile(Database::Work&)>& find)
{
    constexpr int attempts = 5;
    for (int attempt = 1;; ++attempt) {
        const WantedFile wanted = [&] {
            auto db = database.read();
            return find(db);
        }();
        try {
            return {files.open(wanted.storedName), wanted.sha256.value_or("")};
        } catch (const std::system_error& error) {
            // An upload may have replaced it since: then the database names another one by now.
            if (error.code() != std::errc::no_such_file_or_directory || attempt == attempts)
                throw;
        }
    }
}

} // namespace local_platform
