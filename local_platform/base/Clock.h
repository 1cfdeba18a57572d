// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>

namespace local_platform {

/// The platform's time in whole seconds since 1970. The offset lets an operator see how things end without
/// waiting for them.
class Clock
{
public:
    explicit Clock(long long offsetSeconds = 0)
        : offset_(offsetSeconds)
    {
    }

    long long now() const
    {
        const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
        return std::chrono::duration_cast<std::chrono::seconds>(sinceEpoch).count() + offset_;
    }

private:
    long long offset_;
};

} // namespace local_platform
