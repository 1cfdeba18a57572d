// SPDX-License-Identifier: MIT
#include "store/Session.h"

#include <soci/sqlite3/soci-sqlite3.h>

namespace local_platform {

namespace {

/// The library hides the type that it hands out here, which the undefined-behaviour sanitizer would look for.
__attribute__((no_sanitize("vptr"))) void keepJournal(soci::session& sql)
{
    int on = 1;
    const auto* backend = static_cast<soci::sqlite3_session_backend*>(sql.get_backend());
    sqlite_api::sqlite3_file_control(backend->conn_, "main", SQLITE_FCNTL_PERSIST_WAL, &on);
}

} // namespace

void openSession(soci::session& sql, const std::filesystem::path& file)
{
    openPlainly(sql, file);
    // The journal and its index stay when the last connection ends: on a full disk there would be no room to
    // make them anew, and not even a start would be possible.
    keepJournal(sql);
    // An answered request must survive a power cut, so every commit waits for the disk.
    sql << "pragma journal_mode=wal";
    sql << "pragma synchronous=full";
    sql << "pragma foreign_keys=on";
}

void openForReading(soci::session& sql, const std::filesystem::path& file)
{
    sql.open(soci::sqlite3, "readonly=true timeout=10 db=\"" + file.string() + '"');
}

void openPlainly(soci::session& sql, const std::filesystem::path& file)
{
    sql.open(soci::sqlite3, "timeout=10 db=\"" + file.string() + '"');
}

} // namespace local_platform
