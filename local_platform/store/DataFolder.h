// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace local_platform {

/// The folder of all that the platform keeps. A file in it, the mark, says that it is one, in which format,
/// and under which id; the database repeats the id. Nothing is touched in a folder that has no mark, another
/// program's, a later one or one that does not fit its database: the constructors throw and say what to do.
class DataFolder
{
public:
    static constexpr int format = 1;
    static constexpr const char* markName = "tav-local-platform.json";

    enum class Use
    {
        Serve, ///< by the one platform that runs on it; a new or empty folder becomes a data folder
        Inspect ///< beside a running platform, changing nothing
    };

    DataFolder(const std::filesystem::path& path, Use use);
    ~DataFolder();
    DataFolder(const DataFolder&) = delete;
    DataFolder& operator=(const DataFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path database() const { return path_ / databaseName; }
    std::filesystem::path files() const { return path_ / "files"; }
    std::filesystem::path incoming() const { return path_ / "incoming"; }
    std::filesystem::path trash() const { return path_ / "trash"; }
    std::filesystem::path scratch() const { return path_ / "scratch"; }
    std::filesystem::path outbox() const { return path_ / "outbox"; }

    const std::string& id() const { return id_; }
    /// What is in the folder and none of the platform's.
    std::vector<std::string> strangers() const;

    /// For a folder that is to become a data folder: whether nothing is in it, or it does not exist.
    static bool isFree(const std::filesystem::path& path);
    static void createFolders(const std::filesystem::path& path);
    /// Makes the folder a data folder, as the last step of filling it.
    static void writeMark(const std::filesystem::path& path, const std::string& id);

    static constexpr const char* databaseName = "platform.sqlite";

private:
    void serve(bool marked);
    void takeLock();
    void readMark();
    void adoptOrBegin();
    void requireSound() const;
    void refuseLinks() const;
    void putInOrder() const;

    std::filesystem::path path_;
    std::string id_;
    int lock_ = -1;
};

/// Whether a platform runs on the folder.
bool isServed(const std::filesystem::path& data);

} // namespace local_platform
