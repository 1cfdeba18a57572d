// SPDX-License-Identifier: MIT
#include "store/DataFolder.h"

#include "store/Disk.h"
#include "store/Schema.h"
#include "store/Secrets.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <nlohmann/json.hpp>
#include <spdlog/spdlog.h>
#include <stdexcept>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace local_platform {

namespace fs = std::filesystem;

namespace {

const std::string programName = "tav-local-platform";
const std::array<const char*, 5> folders = {"files", "incoming", "trash", "scratch", "outbox"};
const std::array<const char*, 7> plainFiles = {DataFolder::databaseName, "platform.sqlite-wal",
    "platform.sqlite-shm", "platform.sqlite-journal", "lock", DataFolder::markName,
    "tav-local-platform.json.unfinished"};

/// What a file system's own root may hold.
bool isOfTheSystem(const std::string& name)
{
    return name == "lost+found";
}

bool isOurs(const std::string& name)
{
    const auto same = [&](const char* own) { return name == own; };
    return std::any_of(folders.begin(), folders.end(), same)
        || std::any_of(plainFiles.begin(), plainFiles.end(), same);
}

std::vector<std::string> entriesOf(const fs::path& folder)
{
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder))
        if (const std::string name = entry.path().filename().string(); !isOfTheSystem(name))
            names.push_back(name);
    std::sort(names.begin(), names.end());
    return names;
}

[[noreturn]] void refuse(const fs::path& folder, const std::string& why, const std::string& whatToDo)
{
    throw std::runtime_error(folder.string() + " " + why + ". Nothing in it was touched. " + whatToDo);
}

int lockFile(const fs::path& data, int flags)
{
    return ::open((data / "lock").c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | flags, 0600);
}

bool hasNoTables(const fs::path& database)
{
    const DatabaseLook look = lookAt(database, Reading::Untraced);
    return look.readable && look.tables == 0;
}

/// A start that was cut short before it had a database leaves this much.
bool isBarelyBegun(const fs::path& folder)
{
    for (const std::string& name : entriesOf(folder))
        if (name != "lock" && !(name.rfind(DataFolder::databaseName, 0) == 0 && isOurs(name)))
            return false;
    const fs::path database = folder / DataFolder::databaseName;
    return !fs::exists(fs::symlink_status(database))
        || (fs::is_regular_file(fs::symlink_status(database)) && hasNoTables(database));
}

} // namespace

DataFolder::DataFolder(const fs::path& path, Use use)
    : path_(fs::absolute(path))
{
    const bool marked = fs::exists(fs::symlink_status(path_ / markName));
    if (!marked && use == Use::Inspect)
        refuse(path_, std::string("is no data folder: it has no mark, ") + markName,
            "Name the folder that the platform was started with; the platform itself takes over one of an "
            "earlier version.");
    if (marked)
        refuseLinks();
    if (use == Use::Inspect) {
        readMark();
        return;
    }
    try {
        serve(marked);
    } catch (...) {
        if (lock_ >= 0)
            ::close(lock_);
        throw;
    }
}

DataFolder::~DataFolder()
{
    if (lock_ >= 0)
        ::close(lock_);
}

void DataFolder::serve(bool marked)
{
    if (marked) {
        // The lock's file is made only where it is known to belong.
        if (fs::exists(path_ / "lock"))
            takeLock();
        readMark();
        if (lock_ < 0)
            takeLock();
        requireSound();
        bringUpToDate(database(), id_);
    } else {
        adoptOrBegin();
    }
    putInOrder();
}

void DataFolder::takeLock()
{
    lock_ = lockFile(path_, O_CREAT);
    if (lock_ < 0)
        throw std::runtime_error(
            "The data folder cannot be used: " + (path_ / "lock").string() + ": " + std::strerror(errno));
    if (::flock(lock_, LOCK_EX | LOCK_NB) != 0)
        throw std::runtime_error("The data folder is in use by another platform: " + path_.string());
}

void DataFolder::readMark()
{
    std::ifstream file(path_ / markName);
    const nlohmann::json mark = nlohmann::json::parse(file, nullptr, false);
    const auto text = [&](const char* name) {
        return mark.is_object() && mark.contains(name) && mark[name].is_string()
            ? mark[name].get<std::string>()
            : std::string();
    };
    id_ = text("id");
    if (text("name") != programName || id_.empty() || !mark.contains("format")
        || !mark["format"].is_number_integer())
        refuse(path_, std::string("has a mark, ") + markName + ", that is not this platform's or is damaged",
            "Bring the mark back from a backup.");
    if (mark["format"].get<long long>() > format)
        refuse(path_, "is a data folder of a later version of the platform",
            "Start it with that version, or restore a backup that this one made.");

    if (!fs::exists(database()))
        refuse(path_, std::string("is a data folder whose database, ") + databaseName + ", is missing",
            "Bring it back, or restore a backup into an empty folder.");
    const DatabaseLook look = lookAt(database(), lock_ >= 0 ? Reading::Alone : Reading::Beside);
    if (!look.readable)
        refuse(path_, "has a database that cannot be read (" + look.problem + ")",
            "Restore a backup into an empty folder.");
    if (look.version > latestSchema)
        refuse(path_, "has a database of a later version of the platform",
            "Start it with that version, or restore a backup that this one made.");
    if (look.id != id_)
        refuse(path_,
            "has a database that is not its own: the id in it differs from the one in "
                + std::string(markName),
            "Bring its own database back, or restore a backup into an empty folder.");
}

void DataFolder::adoptOrBegin()
{
    const fs::path database = path_ / databaseName;
    const bool begin = isFree(path_) || isBarelyBegun(path_);
    DatabaseLook look;
    if (!begin) {
        if (!fs::exists(database))
            refuse(path_, std::string("is not empty and has no mark, ") + markName,
                "Give --data a new or an empty folder. If it is the platform's own, bring its database and "
                "its "
                "mark back, or restore a backup into an empty folder.");
        refuseLinks();
        look = lookAt(database, Reading::Untraced);
        if (!look.readable || !look.ours)
            refuse(path_,
                std::string("has no mark, ") + markName + ", and a " + databaseName
                    + " that is not this platform's"
                    + (look.problem.empty() ? std::string() : " (" + look.problem + ")"),
                "Give --data a new or an empty folder.");
        if (look.version > latestSchema)
            refuse(path_, "has a database of a later version of the platform", "Start it with that version.");
    }

    fs::create_directories(path_);
    takeLock();
    // Somebody else may have been faster.
    if (fs::exists(fs::symlink_status(path_ / markName))) {
        readMark();
        return;
    }
    if (begin && !isBarelyBegun(path_))
        throw std::runtime_error("The data folder is in use by another program: " + path_.string());

    id_ = look.id.empty() ? randomToken() : look.id;
    requireSound();
    bringUpToDate(database, id_);
    writeMark(path_, id_);
    if (!begin)
        spdlog::info("{} was a data folder without a mark and has one now", path_.string());
}

void DataFolder::requireSound() const
{
    const std::string damage =
        fs::exists(database()) ? damageOf(database(), Reading::Alone, false) : std::string();
    if (!damage.empty())
        refuse(path_, "has a damaged database: " + damage, "Restore a backup into an empty folder.");
}

void DataFolder::refuseLinks() const
{
    for (const std::string& name : entriesOf(path_)) {
        if (!isOurs(name))
            continue;
        const auto status = fs::symlink_status(path_ / name);
        const bool folder = std::find(folders.begin(), folders.end(), name) != folders.end();
        if (fs::is_symlink(status) || (folder ? !fs::is_directory(status) : !fs::is_regular_file(status)))
            refuse(path_ / name,
                fs::is_symlink(status) ? "is a symbolic link"
                                       : std::string("is no ") + (folder ? "folder" : "file"),
                "Put back what it stands for: the platform follows no links inside its data folder.");
    }
}

void DataFolder::putInOrder() const
{
    createFolders(path_);
    // What an earlier version left open to others.
    const auto shut = [](const fs::path& path, mode_t mode) {
        struct stat status = {};
        if (::lstat(path.c_str(), &status) == 0 && (status.st_mode & 077) != 0
            && ::chmod(path.c_str(), mode) != 0)
            spdlog::warn("{} can be read by others: {}", path.string(), std::strerror(errno));
    };
    shut(path_, 0700);
    for (const char* name : folders)
        shut(path_ / name, 0700);
    for (const char* name : plainFiles)
        shut(path_ / name, 0600);
}

std::vector<std::string> DataFolder::strangers() const
{
    std::vector<std::string> names = entriesOf(path_);
    names.erase(std::remove_if(names.begin(), names.end(), isOurs), names.end());
    return names;
}

bool DataFolder::isFree(const fs::path& path)
{
    const auto status = fs::status(path);
    return !fs::exists(status) || (fs::is_directory(status) && entriesOf(path).empty());
}

void DataFolder::createFolders(const fs::path& path)
{
    fs::create_directories(path);
    for (const char* name : folders)
        fs::create_directory(path / name);
}

void DataFolder::writeMark(const fs::path& path, const std::string& id)
{
    const nlohmann::json mark = {{"name", programName}, {"format", format}, {"id", id}};
    writeWhole(path / markName, mark.dump(4) + '\n');
}

bool isServed(const fs::path& data)
{
    const int descriptor = lockFile(data, 0);
    if (descriptor < 0)
        return false;
    const bool served = ::flock(descriptor, LOCK_SH | LOCK_NB) != 0;
    ::close(descriptor);
    return served;
}

} // namespace local_platform
