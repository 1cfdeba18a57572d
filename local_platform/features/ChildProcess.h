// SPDX-License-Identifier: MIT
#pragma once

#include "features/Cage.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace local_platform {

struct ChildLimits
{
    std::chrono::steady_clock::time_point deadline;
    std::chrono::seconds processorTime;
    std::uint64_t memory; ///< bytes of data
    std::uint64_t space; ///< bytes of any one file that it writes, and of all together
    unsigned threads;
    unsigned files; ///< open ones, and names in its directory
};

enum class ChildOutcome
{
    Succeeded,
    Failed,
    Killed, ///< by a signal, such as for its limits
    OutOfTime,
    Unwanted
};

/// Runs a program in a cage around the directory given, where it works, and in a process group of its own,
/// and waits for its end. It inherits neither files nor environment. When it ends, when its time is up and
/// when this process ends, all ends that it may have started.
/// @param command the program's path and its arguments
/// @param errors file that takes its standard error
/// @param isWanted asked from time to time
ChildOutcome runChild(const std::vector<std::string>& command, const std::filesystem::path& directory,
    const std::filesystem::path& errors, const ChildLimits& limits, const Cage& cage,
    const std::function<bool()>& isWanted);

} // namespace local_platform
