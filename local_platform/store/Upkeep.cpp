// SPDX-License-Identifier: MIT
#include "store/Upkeep.h"

#include "store/Inventory.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <set>
#include <spdlog/spdlog.h>

namespace local_platform {

namespace fs = std::filesystem;

namespace {

constexpr auto sweepInterval = std::chrono::hours(1);
constexpr std::size_t namesTold = 5;

/// A line of the log for a list that may be long.
void tell(const std::string& what, const std::vector<std::string>& names)
{
    if (names.empty())
        return;
    std::string some;
    for (std::size_t i = 0; i < std::min(namesTold, names.size()); ++i)
        some += (i == 0 ? "" : ", ") + names[i];
    spdlog::warn("{}: {} in all: {}{}", what, names.size(), some, names.size() > namesTold ? ", ..." : "");
}

/// What fails here must not keep the platform from serving what it has.
template <typename Step>
void attempt(const char* what, Step step)
{
    try {
        step();
    } catch (const std::exception& error) {
        spdlog::error("{}: {}", what, error.what());
    }
}

} // namespace

Upkeep::Upkeep(const DataFolder& folder, Database& database, const FileStore& files, const Trash& trash)
    : folder_(folder)
    , database_(database)
    , files_(files)
    , trash_(trash)
{
    attempt("Moving replaced files to the trash", [this] { finishTrashing(); });
    attempt("Finishing uploads", [this] { finishUploads(); });
    attempt("Taking digests", [this] { takeMissingDigests(); });
    attempt("Emptying the scratch folder", [this] { emptyScratch(); });
    attempt("Removing old files from the trash", [this] { trash_.sweep(); });
    attempt("Comparing files and database", [this] { reportUnknown(); });
    sweeping_ = std::thread([this] { sweepNowAndThen(); });
}

Upkeep::~Upkeep()
{
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
    }
    ended_.notify_one();
    sweeping_.join();
}

void Upkeep::finishUploads()
{
    std::vector<TrashedFile> unfinished;
    for (const std::string& name : FileStore::storedNames(files_.incoming())) {
        auto db = database_.work();
        if (isKnown(db, name)) {
            files_.moveToFiles(name);
            continue;
        }
        // Nobody was ever told that it had arrived.
        const auto size = static_cast<long long>(fs::file_size(files_.incoming() / name));
        unfinished.push_back(trash_.enter(db, {name, "unfinished upload", size, {}, {}}));
        db.commit();
        trash_.take(unfinished.back());
    }
    if (!unfinished.empty())
        spdlog::info("Moved {} unfinished uploads to the trash", unfinished.size());
}

void Upkeep::finishTrashing()
{
    auto db = database_.read();
    for (const TrashedFile& file : trashedFiles(db))
        if (!fs::exists(fs::symlink_status(files_.trash() / file.nameInTrash())))
            trash_.take(file);
}

void Upkeep::takeMissingDigests()
{
    std::vector<KnownFile> files = [this] {
        auto db = database_.read();
        return knownFiles(db);
    }();
    files.erase(std::remove_if(files.begin(), files.end(), [](const auto& file) { return file.sha256; }),
        files.end());
    if (files.empty())
        return;
    spdlog::info("Taking the digests of {} files that an earlier version stored", files.size());
    for (const KnownFile& file : files) {
        attempt("Taking a digest", [&] {
            const std::string digest = digestOf(files_.open(file.storedName));
            auto db = database_.work();
            for (const std::string table : {"backups", "shared_files"})
                db.run("update " + table + " set sha256 = :digest where stored_name = :name",
                    {digest, file.storedName});
            db.commit();
        });
    }
}

void Upkeep::emptyScratch()
{
    for (const std::string& name : FileStore::storedNames(folder_.scratch()))
        fs::remove_all(folder_.scratch() / name);
}

void Upkeep::reportUnknown() const
{
    auto db = database_.read();
    std::set<std::string> known;
    std::vector<std::string> missing;
    for (const KnownFile& file : knownFiles(db)) {
        known.insert(file.storedName);
        if (!fs::exists(files_.files() / file.storedName))
            missing.push_back(file.storedName + " (" + file.role + ")");
    }
    std::vector<std::string> unknown = folder_.strangers();
    for (const auto& entry : fs::directory_iterator(files_.files()))
        if (known.count(entry.path().filename().string()) == 0)
            unknown.push_back("files/" + entry.path().filename().string());
    tell("Files that the database knows are missing", missing);
    tell("Unknown to the platform, and left alone", unknown);
}

void Upkeep::sweepNowAndThen()
{
    std::unique_lock lock(mutex_);
    while (!ended_.wait_for(lock, sweepInterval, [this] { return ending_; }))
        attempt("Removing old files from the trash", [this] { trash_.sweep(); });
}

} // namespace local_platform
