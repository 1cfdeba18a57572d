// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace local_platform {

/// A fixed number of places for work that must not be done too often at a time.
class Places
{
public:
    explicit Places(unsigned count)
        : free_(count)
    {
    }

    /// One place, given back with this object.
    class Place
    {
    public:
        /// Waits for a place; without one after the time given, taken() is false.
        explicit Place(Places& places, std::chrono::seconds patience = std::chrono::hours(1))
            : places_(places)
        {
            std::unique_lock lock(places_.mutex_);
            taken_ = places_.freed_.wait_for(lock, patience, [this] { return places_.free_ > 0; });
            if (taken_)
                --places_.free_;
        }
        ~Place()
        {
            if (!taken_)
                return;
            {
                const std::lock_guard lock(places_.mutex_);
                ++places_.free_;
            }
            places_.freed_.notify_one();
        }
        Place(const Place&) = delete;
        Place& operator=(const Place&) = delete;

        bool taken() const { return taken_; }

    private:
        Places& places_;
        bool taken_ = false;
    };

private:
    std::mutex mutex_;
    std::condition_variable freed_;
    unsigned free_;
};

} // namespace local_platform
