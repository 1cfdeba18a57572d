// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>

namespace local_platform {

/// Whether a peer moves bytes fast enough. Counts only the time that it was waited for, so that nobody pays
/// for the time of this server.
class Pace
{
public:
    using Clock = std::chrono::steady_clock;

    Pace(std::chrono::seconds window, std::uint64_t bytesPerSecond)
        : window_(window)
        , enough_(static_cast<std::uint64_t>(window.count()) * bytesPerSecond)
    {
    }

    void restart(std::uint64_t moved)
    {
        waited_ = {};
        moved_ = moved;
    }

    /// When to look again while the peer is waited for.
    Clock::time_point beginWait(Clock::time_point now)
    {
        began_ = now;
        return now + (window_ - waited_);
    }

    /// False where too little was moved.
    /// @param moved in all
    bool endWait(Clock::time_point now, std::uint64_t moved)
    {
        waited_ += now - began_;
        if (waited_ < window_)
            return true;
        const bool isEnough = moved >= moved_ + enough_;
        restart(moved);
        return isEnough;
    }

private:
    const Clock::duration window_;
    const std::uint64_t enough_;
    Clock::duration waited_ = {};
    Clock::time_point began_ = {};
    std::uint64_t moved_ = 0;
};

} // namespace local_platform
