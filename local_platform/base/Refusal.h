// SPDX-License-Identifier: MIT
#pragma once

#include <stdexcept>
#include <string>

namespace local_platform {

/// A request that the platform turns down: thrown anywhere, answered in one place.
class Refusal : public std::runtime_error
{
public:
    explicit Refusal(const std::string& message, int status = 400, int code = 1)
        : std::runtime_error(message)
        , status_(status)
        , code_(code)
    {
    }

    int status() const { return status_; } ///< HTTP status
    int code() const { return code_; } ///< "code" of the envelope

private:
    int status_;
    int code_;
};

} // namespace local_platform
