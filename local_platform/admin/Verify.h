// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>

namespace local_platform {

/// What the administrator's commands end with.
enum Outcome
{
    AllGood = 0,
    Findings = 2 ///< done, but not all is as it should be
};

/// Compares each file with what the database knows of it, changing nothing, and prints what is changed,
/// missing or surplus. A platform may run meanwhile. Throws when the folder or its database cannot be read at
/// all.
Outcome verify(const std::filesystem::path& data);

} // namespace local_platform
