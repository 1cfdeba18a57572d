// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <iterator>
#include <mutex>
#include <string>
#include <unordered_map>

namespace local_platform {

/// How often each of many may do something within a window of time. A restart forgets, and memory is bounded:
/// of more names than fit, those are forgotten first whose windows are over.
class Budgets
{
public:
    Budgets(long long limit, long long window, std::size_t capacity = 100000)
        : limit_(limit)
        , window_(window)
        , capacity_(capacity)
    {
    }

    bool isSpent(const std::string& name, long long now) const
    {
        const std::lock_guard lock(mutex_);
        const auto found = used_.find(name);
        return found != used_.end() && now < found->second.since + window_ && found->second.count >= limit_;
    }

    void spend(const std::string& name, long long now)
    {
        const std::lock_guard lock(mutex_);
        if (used_.size() >= capacity_ && used_.count(name) == 0)
            makeRoom(now);
        Use& use = used_[name];
        if (now >= use.since + window_)
            use = {now, 0};
        ++use.count;
    }

    void forget(const std::string& name)
    {
        const std::lock_guard lock(mutex_);
        used_.erase(name);
    }

private:
    struct Use
    {
        long long since = 0;
        long long count = 0;
    };

    void makeRoom(long long now)
    {
        for (auto use = used_.begin(); use != used_.end();)
            use = now >= use->second.since + window_ ? used_.erase(use) : std::next(use);
        while (used_.size() >= capacity_)
            used_.erase(used_.begin());
    }

    const long long limit_;
    const long long window_;
    const std::size_t capacity_;
    mutable std::mutex mutex_;
    std::unordered_map<std::string, Use> used_;
};

} // namespace local_platform
