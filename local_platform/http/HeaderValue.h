// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <string>

namespace local_platform {

bool sameHeaderName(const std::string& one, const std::string& other);

/// The value of a header such as: form-data; name="a"; filename=b
class HeaderValue
{
public:
    explicit HeaderValue(const std::string& value);

    /// False where quotes do not end or something follows them, and where a parameter has no value or two.
    bool isSound() const { return sound_; }
    /// What comes first, in lower case.
    const std::string& token() const { return token_; }
    /// Empty where there is none.
    std::string parameter(const std::string& name) const;

private:
    std::string token_;
    std::map<std::string, std::string> parameters_; ///< names in lower case
    bool sound_ = true;
};

} // namespace local_platform
