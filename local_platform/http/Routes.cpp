// SPDX-License-Identifier: MIT
#include "http/Routes.h"

namespace local_platform {

void Routes::add(const std::string& method, const std::string& path, Endpoint endpoint)
{
    endpoints_.emplace(std::make_pair(method, path), std::move(endpoint));
}

const Endpoint& Routes::find(Call& call) const
{
    const auto exact = endpoints_.find({call.method(), call.path()});
    if (exact != endpoints_.end())
        return exact->second;
    const std::size_t lastSlash = call.path().rfind('/');
    const auto open = endpoints_.find({call.method(), call.path().substr(0, lastSlash + 1) + '*'});
    if (open == endpoints_.end())
        throw Refusal("There is nothing at this address", 404);
    call.setRest(call.path().substr(lastSlash + 1));
    return open->second;
}

void Routes::each(const std::function<void(const std::string&)>& take) const
{
    for (const auto& [route, endpoint] : endpoints_)
        take(route.first + ' ' + route.second);
}

} // namespace local_platform
