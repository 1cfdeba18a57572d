// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace local_platform {

struct ChildLimits
{
    std::chrono::steady_clock::time_point deadline;
    std::uint64_t memory; ///< bytes of data
    std::uint64_t fileSize; ///< bytes of any one file that it writes
};

enum class ChildOutcome
{
    Succeeded,
    Failed,
    Killed, ///< by a signal, such as for its limits
    OutOfTime
};

/// Runs a program, found by PATH, in a process group of its own and waits for its end. It inherits neither
/// files nor environment, works in the directory given, and is killed with all its children when its time is
/// up.
/// @param errors file that takes its standard error
ChildOutcome runChild(const std::vector<std::string>& command, const std::filesystem::path& directory,
    const std::filesystem::path& errors, const ChildLimits& limits);

} // namespace local_platform
