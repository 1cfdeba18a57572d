// SPDX-License-Identifier: MIT
#include "http/HeaderValue.h"

#include <algorithm>

namespace local_platform {

namespace {

std::string lower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
        [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c; });
    return text;
}

std::string trimmed(const std::string& text)
{
    const std::size_t first = text.find_first_not_of(" \t");
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

} // namespace

bool sameHeaderName(const std::string& one, const std::string& other)
{
    return lower(one) == lower(other);
}

HeaderValue::HeaderValue(const std::string& value)
{
    std::size_t at = std::min(value.find(';'), value.size());
    token_ = lower(trimmed(value.substr(0, at)));
    while (sound_ && at < value.size()) {
        ++at; // a semicolon
        const std::size_t nameEnd = std::min(value.find_first_of("=;", at), value.size());
        const std::string name = lower(trimmed(value.substr(at, nameEnd - at)));
        std::string text;
        at = nameEnd;
        if (at < value.size() && value[at] == '=') {
            at = std::min(value.find_first_not_of(" \t", at + 1), value.size());
            if (at < value.size() && value[at] == '"') {
                for (++at; at < value.size() && value[at] != '"'; ++at) {
                    // Elsewhere it is a backslash of somebody's path.
                    if (value[at] == '\\' && at + 1 < value.size()
                        && (value[at + 1] == '"' || value[at + 1] == '\\'))
                        ++at;
                    text += value[at];
                }
                sound_ = at < value.size();
                const std::size_t next = std::min(value.find(';', at), value.size());
                sound_ = sound_ && trimmed(value.substr(at + 1, next - at - 1)).empty();
                at = next;
            } else {
                const std::size_t next = std::min(value.find(';', at), value.size());
                text = trimmed(value.substr(at, next - at));
                at = next;
            }
        }
        const bool isThere = at > nameEnd;
        if (!name.empty() || isThere)
            sound_ = isThere && parameters_.emplace(name, text).second && sound_;
    }
}

std::string HeaderValue::parameter(const std::string& name) const
{
    const auto found = parameters_.find(name);
    return found == parameters_.end() ? std::string() : found->second;
}

} // namespace local_platform
