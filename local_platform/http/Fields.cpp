// SPDX-License-Identifier: MIT
#include "http/Fields.h"

#include "base/Text.h"
#include "http/Envelope.h"

#include <algorithm>
#include <sstream>

namespace local_platform {

namespace {

constexpr std::size_t longestList = 64u << 10;
constexpr std::size_t mostItems = 1000;
constexpr long long longestPage = 10000;

} // namespace

Fields Fields::fromQuery(const std::string& text)
{
    Fields fields;
    std::istringstream pairs(text);
    for (std::string pair; std::getline(pairs, pair, '&');) {
        const std::size_t equals = pair.find('=');
        if (equals != std::string::npos)
            fields.add(percentDecoded(pair.substr(0, equals)), percentDecoded(pair.substr(equals + 1)));
    }
    return fields;
}

const std::string& Fields::text(const std::string& name, std::size_t longest) const
{
    const auto found = values_.find(name);
    if (found == values_.end())
        throw Refusal("The field " + name + " is missing");
    if (!isPlainText(found->second))
        throw Refusal("The field " + name + " is not valid UTF-8 text");
    if (found->second.size() > longest)
        throw Refusal(
            "The field " + name + " is too long; at most " + std::to_string(longest) + " bytes are taken");
    return found->second;
}

const std::string& Fields::filledText(const std::string& name) const
{
    const std::string& value = text(name);
    if (value.find_first_not_of(" \t\r\n") == std::string::npos)
        throw Refusal("The field " + name + " is empty");
    return value;
}

long long Fields::id(const std::string& name) const
{
    return idFrom(text(name));
}

Page Fields::page() const
{
    const long long limit = has("limit") ? id("limit") : longestPage;
    const long long offset = has("offset") && text("offset") != "0" ? id("offset") : 0;
    if (limit < 0 || offset < 0)
        throw Refusal("The fields limit and offset are whole numbers");
    return {std::min(limit, longestPage), offset};
}

std::vector<std::string> Fields::list(const std::string& name) const
{
    std::vector<std::string> items = listed(text(name, longestList));
    if (items.size() > mostItems)
        throw Refusal(
            "The field " + name + " has too many items; at most " + std::to_string(mostItems) + " are taken");
    return items;
}

} // namespace local_platform
