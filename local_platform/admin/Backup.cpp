// SPDX-License-Identifier: MIT
#include "admin/Backup.h"

#include "base/Text.h"
#include "store/DataFolder.h"
#include "store/Disk.h"
#include "store/FileStore.h"
#include "store/Inventory.h"
#include "store/Schema.h"
#include "store/Session.h"
#include "store/Trash.h"

#include <algorithm>
#include <cerrno>
#include <iostream>
#include <stdexcept>
#include <system_error>
#include <unistd.h>

namespace local_platform {

namespace fs = std::filesystem;

namespace {

/// One moment of the database, in a file of its own.
void takeSnapshotOf(const DataFolder& folder, const fs::path& snapshot)
{
    takeSnapshot(folder.database(), snapshot);
    {
        soci::session sql;
        openPlainly(sql, snapshot);
        sql << "delete from trash"; // which is not copied
    }
    syncFile(snapshot);
    const std::string damage = damageOf(snapshot, Reading::Alone, true);
    if (!damage.empty())
        throw std::runtime_error("The database is damaged: " + damage);
}

bool isInside(const fs::path& inner, const fs::path& outer)
{
    const fs::path a = fs::weakly_canonical(inner);
    const fs::path b = fs::weakly_canonical(outer);
    return std::mismatch(b.begin(), b.end(), a.begin(), a.end()).first == b.end();
}

/// Where a file is that the snapshot knows: it may have been replaced since, but is removed by nobody.
std::vector<fs::path> placesOf(const std::string& storedName, const DataFolder& folder, Database& live)
{
    auto db = live.read();
    std::vector<fs::path> places = {folder.files() / storedName, folder.incoming() / storedName};
    for (const TrashedFile& file : db.all<TrashedFile>(
             "select stored_name, trashed_at, file_name, size, sha256 from trash where stored_name = :name",
             {storedName}))
        places.push_back(folder.trash() / file.nameInTrash());
    return places;
}

bool copyOne(const fs::path& from, const fs::path& to, Copying copying)
{
    const auto status = fs::symlink_status(from);
    if (!fs::exists(status))
        return false;
    if (!fs::is_regular_file(status))
        throw std::runtime_error("is no plain file");
    if (copying == Copying::MayLink && ::link(from.c_str(), to.c_str()) == 0)
        return true;
    try {
        copyDurably(from, to);
    } catch (const std::system_error& error) {
        if (error.code() != std::errc::no_such_file_or_directory || fs::exists(to))
            throw;
        return false; // it moved just now
    }
    return true;
}

bool copyFile(
    const KnownFile& file, const DataFolder& folder, Database& live, const fs::path& to, Copying copying)
{
    constexpr int attempts = 3;
    for (int attempt = 0; attempt < attempts; ++attempt)
        for (const fs::path& place : placesOf(file.storedName, folder, live))
            if (copyOne(place, to, copying))
                return true;
    return false;
}

/// What is wrong with a copy; empty for a good one.
std::string faultOf(const KnownFile& file, const FileStore& copies)
{
    const OpenFile copy = copies.open(file.storedName);
    if (static_cast<long long>(copy.size()) != file.size || (file.sha256 && digestOf(copy) != *file.sha256))
        return "changed";
    return file.sha256 ? "" : "without a digest";
}

bool isOutOfRoom(const std::exception& error)
{
    const auto* system = dynamic_cast<const std::system_error*>(&error);
    return system && (system->code().value() == ENOSPC || system->code().value() == EDQUOT);
}

} // namespace

Outcome copyDataFolder(const fs::path& source, const fs::path& target, Copying copying)
{
    const DataFolder folder(source, DataFolder::Use::Inspect);
    if (!DataFolder::isFree(target))
        throw std::runtime_error(target.string()
            + " is not empty. Nothing in it was touched. Name a new or an "
              "empty folder.");
    if (isInside(target, source))
        throw std::runtime_error(
            target.string() + " is inside " + source.string() + ". Name a folder outside.");
    DataFolder::createFolders(target);

    const TrashHold hold(folder.trash(), TrashHold::Kind::Shared);
    const fs::path snapshot = target / "platform.sqlite.unfinished";
    takeSnapshotOf(folder, snapshot);

    Database live(folder.database(), Database::Access::ReadOnly);
    Database copied(snapshot, Database::Access::ReadOnly);
    const std::vector<KnownFile> files = [&] {
        auto db = copied.read();
        return knownFiles(db);
    }();
    const FileStore copies(target, 0);
    long long bytes = 0;
    int faults = 0;
    for (const KnownFile& file : files) {
        std::string fault;
        try {
            const bool found = copyFile(file, folder, live, copies.files() / file.storedName, copying);
            fault = found ? faultOf(file, copies) : "missing";
        } catch (const std::exception& error) {
            if (isOutOfRoom(error))
                throw;
            fault = std::string("unreadable, ") + error.what();
        }
        bytes += file.size;
        if (fault.empty())
            continue;
        ++faults;
        std::cout << fault << ": files/" << file.storedName << "  (" << file.role << ", \""
                  << oneLine(file.fileName) << "\")\n";
    }
    syncDirectory(copies.files());
    fs::rename(snapshot, target / DataFolder::databaseName);
    DataFolder::writeMark(target, folder.id());
    std::cout << files.size() << " files, " << bytes << " bytes, and the database are in " << target.string()
              << ", " << faults << " findings" << std::endl;
    return faults == 0 ? AllGood : Findings;
}

} // namespace local_platform
