// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <soci/soci.h>

namespace local_platform {

/// Connects to the database in the way that all of the platform's connections have in common.
void openSession(soci::session& sql, const std::filesystem::path& file);
/// Connects to a database that is not to be changed.
void openForReading(soci::session& sql, const std::filesystem::path& file);
/// Connects to a database that nobody else uses, without settings of its own.
void openPlainly(soci::session& sql, const std::filesystem::path& file);

} // namespace local_platform
