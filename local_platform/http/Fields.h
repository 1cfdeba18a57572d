// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <string>
#include <vector>

namespace local_platform {

/// The named values of a query or of a form. What a request lacks is refused where it is asked for.
class Fields
{
public:
    Fields() = default;
    /// From "a=1&b=2". A '+' is a plus: clients write a space as %20 and leave '+' as it is.
    static Fields fromQuery(const std::string& text);

    /// The first value of a name counts.
    void add(const std::string& name, const std::string& value) { values_.emplace(name, value); }
    bool has(const std::string& name) const { return values_.count(name) != 0; }

    /// Refused when missing or no text.
    const std::string& text(const std::string& name) const;
    /// Refused when missing or blank.
    const std::string& filledText(const std::string& name) const;
    /// -1, which is nobody's id, for anything but a positive number.
    long long id(const std::string& name) const;
    std::vector<std::string> list(const std::string& name) const;

private:
    std::map<std::string, std::string> values_;
};

} // namespace local_platform
