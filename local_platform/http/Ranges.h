// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace local_platform {

struct Part
{
    std::uint64_t at;
    std::uint64_t size;
};

/// The part that a Range header asks for; none, for all of it, where it asks for several or is nothing that
/// is understood. Refuses a part that the file does not have.
std::optional<Part> partOf(std::uint64_t fileSize, const std::string& range);

} // namespace local_platform
