// SPDX-License-Identifier: MIT
#include "http/Ranges.h"

#include "base/Refusal.h"
#include "base/Text.h"

#include <algorithm>
#include <charconv>

namespace local_platform {

namespace {

/// Digits alone; the largest number for one that is larger still.
std::optional<std::uint64_t> number(const std::string& digits)
{
    std::uint64_t value = 0;
    if (digits.empty() || digits.find_first_not_of("0123456789") != std::string::npos)
        return std::nullopt;
    if (std::from_chars(digits.data(), digits.data() + digits.size(), value).ec != std::errc())
        return UINT64_MAX;
    return value;
}

} // namespace

std::optional<Part> partOf(std::uint64_t fileSize, const std::string& range)
{
    const std::string unit = "bytes=";
    if (!startsWith(range, unit))
        return std::nullopt;
    const std::size_t dash = range.find('-');
    if (dash == std::string::npos)
        return std::nullopt;
    const std::string first = range.substr(unit.size(), dash - unit.size());
    const std::string last = range.substr(dash + 1);
    const auto from = number(first);
    const auto to = number(last);
    if ((!first.empty() && !from) || (!last.empty() && !to) || (!from && !to) || (from && to && *from > *to))
        return std::nullopt;

    const std::uint64_t at = from ? *from : fileSize - std::min(*to, fileSize);
    if (at >= fileSize)
        throw Refusal("The file has no such part", 416);
    return Part{at, from && to ? std::min(*to, fileSize - 1) - at + 1 : fileSize - at};
}

} // namespace local_platform
