// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>

namespace local_platform {

/// Finds the end of a request's head while it comes in; looks at each byte once.
class HeadScan
{
public:
    /// The size of the head with its empty line; 0 while it is not all there. Empty lines before it are
    /// removed. Refuses what is too long and what two readers could read differently.
    std::size_t endOf(std::string& bytes);

private:
    std::size_t seen_ = 0;
    std::size_t lineStart_ = 0;
    std::size_t lines_ = 0;
};

} // namespace local_platform
