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

    /// The same, and after how many seconds it is worth another try.
    Refusal retriedAfter(int seconds) const
    {
        Refusal refusal = *this;
        refusal.retryAfter_ = seconds;
        return refusal;
    }
    int retryAfter() const { return retryAfter_; } ///< seconds; 0 where nothing is known

private:
    int status_;
    int code_;
    int retryAfter_ = 0;
};

} // namespace local_platform
