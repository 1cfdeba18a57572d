// SPDX-License-Identifier: MIT
#include "store/Trash.h"

#include "store/Disk.h"

#include <cerrno>
#include <fcntl.h>
#include <spdlog/spdlog.h>
#include <sys/file.h>
#include <unistd.h>

namespace local_platform {

namespace {

constexpr long long removedAtOnce = 100; // in one transaction

} // namespace

Trash::Trash(Database& database, const FileStore& files, const Clock& clock, long long maxAge)
    : database_(database)
    , files_(files)
    , clock_(clock)
    , maxAge_(maxAge)
{
}

TrashedFile Trash::enter(Database::Work& db, const KnownFile& file) const
{
    db.run("insert into trash (stored_name, trashed_at, file_name, size, sha256)"
           " values (:name, :now, :file, :size, :sha256)",
        {file.storedName, clock_.now(), file.fileName, file.size, file.sha256.value_or("")});
    return {file.storedName, clock_.now(), file.fileName, file.size, file.sha256};
}

void Trash::take(const TrashedFile& file) const noexcept
{
    try {
        files_.moveToTrash(file.storedName, file.nameInTrash());
    } catch (const std::exception& error) {
        spdlog::warn("A replaced file could not be moved to the trash: {}", error.what());
    }
}

void Trash::sweep() const
{
    const TrashHold hold(files_.trash(), TrashHold::Kind::Alone);
    if (!hold.held())
        return;
    const long long before = clock_.now() - maxAge_;
    int removed = 0;
    while (true) {
        const auto old = database_.read().all<TrashedFile>(
            "select stored_name, trashed_at, file_name, size, sha256 from trash where trashed_at <= :before"
            " order by trashed_at limit :count",
            {before, removedAtOnce});
        if (old.empty())
            break;
        for (const TrashedFile& file : old)
            files_.removeFromTrash(file.nameInTrash());
        auto db = database_.work();
        for (const TrashedFile& file : old)
            db.run("delete from trash where stored_name = :name", {file.storedName});
        db.commit();
        removed += static_cast<int>(old.size());
    }
    if (removed > 0)
        spdlog::info("Removed {} files that had been in the trash for their time", removed);
}

TrashHold::TrashHold(const std::filesystem::path& trash, Kind kind)
    : descriptor_(::open(trash.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW))
    , held_(false)
{
    if (descriptor_ < 0)
        throwSystemError(errno, trash.string());
    held_ = ::flock(descriptor_, kind == Kind::Shared ? LOCK_SH : LOCK_EX | LOCK_NB) == 0;
}

TrashHold::~TrashHold()
{
    ::close(descriptor_);
}

} // namespace local_platform
