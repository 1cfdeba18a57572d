// SPDX-License-Identifier: MIT
#pragma once

#include "store/DataFolder.h"
#include "store/Database.h"
#include "store/FileStore.h"
#include "store/Trash.h"

#include <condition_variable>
#include <mutex>
#include <thread>

namespace local_platform {

/// Keeps disk and database of one mind. What neither knows is told in the log and stays where it is.
class Upkeep
{
public:
    /// Brings in order what an earlier run left, then sees to the trash from time to time.
    Upkeep(const DataFolder& folder, Database& database, const FileStore& files, const Trash& trash);
    ~Upkeep();
    Upkeep(const Upkeep&) = delete;
    Upkeep& operator=(const Upkeep&) = delete;

private:
    void finishUploads();
    void finishTrashing();
    void takeMissingDigests();
    void emptyScratch();
    void reportUnknown() const;
    void sweepNowAndThen();

    const DataFolder& folder_;
    Database& database_;
    const FileStore& files_;
    const Trash& trash_;

    std::mutex mutex_;
    std::condition_variable ended_;
    bool ending_ = false;
    std::thread sweeping_;
};

} // namespace local_platform
