// SPDX-License-Identifier: MIT
#include "http/Envelope.h"

#include <nlohmann/json.hpp>

namespace local_platform {

// Code 500 rather than 401: clients dress up the text of 401 as a network error, and show this one as it is.
Refusal tokenRefused()
{
    return Refusal("Token失效", 401, 500);
}

Refusal unknownProject()
{
    return Refusal("所选项目不存在", 404, 500);
}

Refusal unknown(const std::string& what)
{
    return Refusal("The " + what + " does not exist", 404);
}

Json success(const Json& data)
{
    return {{"code", 0}, {"msg", "success"}, {"data", data}};
}

Json success()
{
    return success(nullptr);
}

Json failure(int code, const std::string& message)
{
    return {{"code", code}, {"msg", message}, {"data", nullptr}};
}

std::string serialized(const Json& document)
{
    return document.dump(-1, ' ', false, Json::error_handler_t::replace);
}

} // namespace local_platform
