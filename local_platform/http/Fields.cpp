// SPDX-License-Identifier: MIT
#include "http/Fields.h"

#include "base/Text.h"
#include "http/Envelope.h"

#include <sstream>

namespace local_platform {

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

const std::string& Fields::text(const std::string& name) const
{
    const auto found = values_.find(name);
    if (found == values_.end())
        throw Refusal("The field " + name + " is missing");
    if (!isPlainText(found->second))
        throw Refusal("The field " + name + " is not valid UTF-8 text");
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

std::vector<std::string> Fields::list(const std::string& name) const
{
    return listed(text(name));
}

} // namespace local_platform
