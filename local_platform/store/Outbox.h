// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <filesystem>
#include <string>

namespace local_platform {

/// Where messages to people end up on a machine that sends none: one text file each.
class Outbox
{
public:
    explicit Outbox(const std::filesystem::path& directory);

    /// @param way "sms" or "mail"
    void put(const std::string& way, const std::string& recipient, const std::string& text);

private:
    std::filesystem::path directory_;
    std::atomic<unsigned> count_{0};
};

} // namespace local_platform
