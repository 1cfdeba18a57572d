// SPDX-License-Identifier: MIT
#pragma once

#include "base/Refusal.h"

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace local_platform {

using Json = nlohmann::json;

/// Clients know this text: the token is unknown, expired or signed out.
Refusal tokenRefused();
/// Clients know this text. It also stands for what belongs to somebody else.
Refusal unknownProject();
/// Anything else that does not exist, or belongs to somebody else: the two are not told apart.
Refusal unknown(const std::string& what);

/// {"code":0,"msg":"success","data":data}
Json success(const Json& data);
Json success();
/// {"code":n,"msg":"...","data":null}
Json failure(int code, const std::string& message);
/// JSON text of a document that may hold anything.
std::string serialized(const Json& document);

} // namespace local_platform
