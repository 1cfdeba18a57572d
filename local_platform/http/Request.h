// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace local_platform {

/// The head of a request that was found sound.
struct Request
{
    std::string method;
    std::string path; ///< percent-decoded, without the query
    std::string query; ///< as it came
    std::string address; ///< whom it comes from
    std::vector<std::pair<std::string, std::string>> headers;

    bool hasBody = false;
    std::uint64_t bodySize = 0; ///< 0 where it comes in chunks
    bool keepsAlive = false;
    bool awaitsContinue = false; ///< sends its body only when told to

    /// The first of the name, in any case; empty where there is none.
    const std::string& header(const std::string& name) const;
};

} // namespace local_platform
