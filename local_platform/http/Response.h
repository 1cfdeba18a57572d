// SPDX-License-Identifier: MIT
#pragma once

#include "http/Call.h"
#include "http/Routes.h"

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace local_platform {

/// What goes out: a text, or a part of a file.
struct Response
{
    int status = 200;
    std::vector<std::pair<std::string, std::string>> headers = {};
    std::string body = {};
    std::shared_ptr<OpenFile> file = nullptr;
    std::uint64_t fileAt = 0;
    std::uint64_t fileSize = 0; ///< of the part
};

/// @param call asks for a part of a file, or for all of it
Response responseTo(Reply reply, const Call& call);
Response responseTo(const Refusal& refusal);
Response failureOfPlatform();

/// Status line and headers, with the empty line.
/// @param keepAlive seconds; 0 where the connection ends with the response
std::string headOf(const Response& response, int keepAlive);

} // namespace local_platform
