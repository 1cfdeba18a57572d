// SPDX-License-Identifier: MIT
#include "http/HeadScan.h"

#include "base/Refusal.h"

#include <algorithm>

namespace local_platform {

namespace {

constexpr std::size_t longestHead = 64u << 10;
constexpr std::size_t longestFirstLine = 16u << 10;
constexpr std::size_t mostLines = 1 + 100;

} // namespace

std::size_t HeadScan::endOf(std::string& bytes)
{
    const auto refuse = [] { throw Refusal("The request cannot be understood"); };
    if (seen_ == 0 && lines_ == 0)
        bytes.erase(0, std::min(bytes.find_first_not_of("\r\n"), bytes.size()));
    for (; seen_ < bytes.size(); ++seen_) {
        const char c = bytes[seen_];
        const bool afterReturn = seen_ > 0 && bytes[seen_ - 1] == '\r';
        if (c == '\0' || (c == '\n') != afterReturn)
            refuse();
        // A line that goes on in the next one means different things to different readers.
        if (seen_ == lineStart_ && (c == ' ' || c == '\t'))
            refuse();
        if (seen_ >= longestHead)
            throw Refusal("The head of the request is too long; at most " + std::to_string(longestHead)
                    + " bytes are taken",
                431);
        if (c != '\n') {
            if (lines_ == 0 && seen_ >= longestFirstLine)
                throw Refusal("The address of the request is too long", 414);
            continue;
        }
        if (seen_ - lineStart_ == 1) {
            const std::size_t end = seen_ + 1;
            *this = HeadScan();
            return end;
        }
        if (++lines_ > mostLines)
            throw Refusal("The request has too many headers", 431);
        lineStart_ = seen_ + 1;
    }
    return 0;
}

} // namespace local_platform
