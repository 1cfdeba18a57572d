// SPDX-License-Identifier: MIT
#pragma once

#include "http/Call.h"
#include "http/Download.h"
#include "http/Envelope.h"
#include "http/Lane.h"

#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <variant>

namespace local_platform {

struct Xml
{
    int status;
    std::string text;
    std::map<std::string, std::string> headers = {};
};

using Reply = std::variant<Json, Download, Xml>;
using Endpoint = std::function<Reply(Call&)>;

struct Route
{
    Endpoint endpoint;
    BodyUse body = {};
    Lane lane = Lane::Usual;
};

/// Finds who asks and the route that answers, before anything of the body is taken. Refuses by throwing.
using Admission = std::function<const Route&(Call&)>;

/// Which endpoint answers which method and path. A path that ends in '*' takes any one further segment.
class Routes
{
public:
    void add(const std::string& method, const std::string& path, Route route);
    void add(const std::string& method, const std::string& path, Endpoint endpoint)
    {
        add(method, path, Route{std::move(endpoint)});
    }
    /// Refuses what no route answers.
    const Route& find(Call& call) const;
    /// "METHOD /path" of each.
    void each(const std::function<void(const std::string&)>& take) const;

private:
    std::map<std::pair<std::string, std::string>, Route> routes_;
};

} // namespace local_platform
