// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <string>

namespace local_platform {

/// The schema that this version of the platform works with.
constexpr int latestSchema = 6;

/// What a database file is, as far as can be told without changing anything.
struct DatabaseLook
{
    bool readable = false;
    bool ours = false;
    int tables = 0;
    int version = 0; ///< 0: no schema yet
    std::string id; ///< of its data folder; empty before schema 3
    std::string problem; ///< why it is not readable
};

enum class Reading
{
    Untraced, ///< nobody may see that it was read: not even a lock appears beside the file
    Alone, ///< nobody else uses the file
    Beside ///< a platform may be writing to it
};
DatabaseLook lookAt(const std::filesystem::path& file, Reading reading);

/// What is wrong with the file, in SQLite's words; empty for a sound one.
/// @param thorough compares indexes with their tables and looks for rows that refer to none, too
std::string damageOf(const std::filesystem::path& file, Reading reading, bool thorough);

/// Writes what the database holds at one moment to a file that is not there or empty.
void takeSnapshot(const std::filesystem::path& file, const std::filesystem::path& target);

/// Brings the database to the latest schema, each step in a transaction of its own; creates it where there is
/// none. One that is up to date is not written to.
void bringUpToDate(const std::filesystem::path& file, const std::string& id);

} // namespace local_platform
