// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <unordered_map>

namespace local_platform {

/// How many connections there are, in all and from each network.
class ConnectionCounts
{
public:
    ConnectionCounts(int most, int mostOfANetwork)
        : most_(most)
        , mostOfANetwork_(mostOfANetwork)
    {
    }

    /// False where there are too many already.
    bool add(const std::string& network)
    {
        const std::lock_guard lock(mutex_);
        if (all_ >= most_)
            return false;
        int& count = networks_[network];
        if (count >= mostOfANetwork_)
            return false;
        ++count;
        ++all_;
        return true;
    }

    void remove(const std::string& network)
    {
        const std::lock_guard lock(mutex_);
        if (const auto found = networks_.find(network); --found->second == 0)
            networks_.erase(found);
        if (--all_ == 0)
            none_.notify_all();
    }

    /// Waits until there are none, no longer than \a end.
    void waitForNone(std::chrono::steady_clock::time_point end)
    {
        std::unique_lock lock(mutex_);
        none_.wait_until(lock, end, [this] { return all_ == 0; });
    }

private:
    const int most_;
    const int mostOfANetwork_;
    std::mutex mutex_;
    std::condition_variable none_;
    std::unordered_map<std::string, int> networks_;
    int all_ = 0;
};

} // namespace local_platform
