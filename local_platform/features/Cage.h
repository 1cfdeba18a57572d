// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <linux/filter.h>
#include <string>
#include <vector>

namespace local_platform {

/// What a child process may reach: files that it needs to run, for reading, a folder of its own, and the
/// calls of the kernel that a program needs which computes. It has no network, starts no process and reaches
/// none.
class Cage
{
public:
    /// @param needed files and folders that it may read and run; those that do not exist count for nothing
    explicit Cage(std::vector<std::filesystem::path> needed);

    /// What this kernel cannot keep a child from, in words for the log.
    const std::vector<std::string>& gaps() const { return gaps_; }

    /// The cage around one folder, made ready before the fork: between fork and exec nothing may be
    /// allocated.
    class Door
    {
    public:
        Door(const Cage& cage, const std::filesystem::path& folder);
        ~Door();
        Door(const Door&) = delete;
        Door& operator=(const Door&) = delete;

        /// Shuts the calling process in for good, and closes all its files but the first three.
        bool shut() const noexcept;

    private:
        const Cage& cage_;
        int ruleset_ = -1; ///< a Landlock ruleset; -1 where the kernel has none
    };

private:
    std::vector<std::filesystem::path> needed_;
    std::vector<sock_filter> filter_; ///< empty where the kernel takes none
    int landlock_ = 0; ///< version of the kernel's interface; 0 for none
    std::vector<std::string> gaps_;
};

} // namespace local_platform
