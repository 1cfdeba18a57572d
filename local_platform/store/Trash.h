// SPDX-License-Identifier: MIT
#pragma once

#include "base/Clock.h"
#include "store/Database.h"
#include "store/FileStore.h"
#include "store/Inventory.h"

#include <filesystem>

namespace local_platform {

/// Where files go that were superseded, until they have been there for their time.
class Trash
{
public:
    Trash(Database& database, const FileStore& files, const Clock& clock, long long maxAge);

    /// Enters a file of the store as part of the caller's work.
    TrashedFile enter(Database::Work& db, const KnownFile& file) const;
    /// Moves what was entered, when the work is committed; the next start makes up for it if this fails.
    void take(const TrashedFile& file) const noexcept;
    /// Removes for good what has been here for its time, unless a backup is being made of it.
    void sweep() const;

private:
    Database& database_;
    const FileStore& files_;
    const Clock& clock_;
    long long maxAge_; ///< seconds
};

/// While it lives, nothing is removed from the trash.
class TrashHold
{
public:
    enum class Kind
    {
        Shared, ///< waits for a removal that goes on
        Alone ///< for who removes; not held() when somebody else holds it
    };

    TrashHold(const std::filesystem::path& trash, Kind kind);
    ~TrashHold();
    TrashHold(const TrashHold&) = delete;
    TrashHold& operator=(const TrashHold&) = delete;

    bool held() const { return held_; }

private:
    int descriptor_;
    bool held_;
};

} // namespace local_platform
