// SPDX-License-Identifier: MIT
#pragma once

#include "store/Secrets.h"

#include <chrono>
#include <mutex>
#include <string>
#include <unordered_map>

namespace local_platform {

/// Who signed in lately, with which password: a client that signs in again and again need not cost the work
/// that makes guessing dear. Kept for minutes, in memory alone, as a digest under a key of this run.
class RecentPasswords
{
public:
    /// @param hash the one in the database: with another one, nothing remembered fits any more
    bool knows(long long user, const std::string& hash, const std::string& password) const
    {
        const std::string digest = digestOf(hash, password);
        const std::lock_guard lock(mutex_);
        const auto found = entries_.find(user);
        return found != entries_.end() && Clock::now() < found->second.until
            && sameSecret(found->second.digest, digest);
    }

    void remember(long long user, const std::string& hash, const std::string& password)
    {
        const std::string digest = digestOf(hash, password);
        const std::lock_guard lock(mutex_);
        if (entries_.size() >= capacity)
            entries_.clear();
        entries_[user] = {digest, Clock::now() + lifetime};
    }

private:
    using Clock = std::chrono::steady_clock;
    static constexpr std::size_t capacity = 10000;
    static constexpr std::chrono::minutes lifetime{10};

    struct Entry
    {
        std::string digest;
        Clock::time_point until;
    };

    std::string digestOf(const std::string& hash, const std::string& password) const
    {
        return fingerprint(key_ + hash + '\n' + password);
    }

    const std::string key_ = randomToken();
    mutable std::mutex mutex_;
    std::unordered_map<long long, Entry> entries_;
};

} // namespace local_platform
