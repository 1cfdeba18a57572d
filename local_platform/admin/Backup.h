// SPDX-License-Identifier: MIT
#pragma once

#include "admin/Verify.h"

#include <filesystem>

namespace local_platform {

enum class Copying
{
    MayLink, ///< hard links where the file system has them: files are never changed in place
    Copies
};

/// Makes of \a target, a new or empty folder, a data folder that holds what \a source held at one moment, but
/// for its trash; a platform may run on \a source meanwhile. Each file is compared with its digest, and what
/// is damaged or missing is printed. The mark comes last: a target without it is not whole.
Outcome copyDataFolder(
    const std::filesystem::path& source, const std::filesystem::path& target, Copying copying);

} // namespace local_platform
