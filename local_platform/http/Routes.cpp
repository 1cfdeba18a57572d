// SPDX-License-Identifier: MIT
#include "http/Routes.h"

namespace local_platform {

void Routes::add(const std::string& method, const std::string& path, Route route)
{
    routes_.emplace(std::make_pair(method, path), std::move(route));
}

const Route& Routes::find(Call& call) const
{
    const auto exact = routes_.find({call.method(), call.path()});
    if (exact != routes_.end())
        return exact->second;
    const std::size_t lastSlash = call.path().rfind('/');
    const auto open = routes_.find({call.method(), call.path().substr(0, lastSlash + 1) + '*'});
    if (open == routes_.end())
        throw Refusal("There is nothing at this address", 404);
    call.setRest(call.path().substr(lastSlash + 1));
    return open->second;
}

void Routes::each(const std::function<void(const std::string&)>& take) const
{
    for (const auto& entry : routes_)
        take(entry.first.first + ' ' + entry.first.second);
}

} // namespace local_platform
