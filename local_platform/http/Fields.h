// SPDX-License-Identifier: MIT
#pragma once

#include "base/Page.h"

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

    static constexpr std::size_t usualLength = 1000;
    /// Refused when missing, no text, or of more bytes.
    const std::string& text(const std::string& name, std::size_t longest = usualLength) const;
    /// Refused when missing or blank.
    const std::string& filledText(const std::string& name) const;
    /// -1, which is nobody's id, for anything but a positive number.
    long long id(const std::string& name) const;
    /// Refused when there are too many.
    std::vector<std::string> list(const std::string& name) const;

    /// What of a list is asked for: all up to a bound, or by "limit" and "offset".
    Page page() const;

private:
    std::map<std::string, std::string> values_;
};

} // namespace local_platform
