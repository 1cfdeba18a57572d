// SPDX-License-Identifier: MIT
#pragma once

#include "store/Sha256.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace local_platform {

/// An open file of the store. It can be read to its end even when it is replaced meanwhile.
class OpenFile
{
public:
    explicit OpenFile(int descriptor);
    OpenFile(OpenFile&& other) noexcept;
    OpenFile& operator=(OpenFile&&) = delete;
    ~OpenFile();

    std::uint64_t size() const { return size_; }
    /// Bytes read at the offset; 0 at the end, negative on failure.
    long read(std::uint64_t offset, char* buffer, std::size_t size) const;

private:
    int descriptor_;
    std::uint64_t size_;
};

/// The SHA-256 of an open file's content, in Base64.
std::string digestOf(const OpenFile& file);

/// A file on its way in: gone with this object, unless it was finished and then kept.
class IncomingFile
{
public:
    IncomingFile(
        const std::filesystem::path& incoming, const std::filesystem::path& files, std::uint64_t maxSize);
    IncomingFile(const IncomingFile&) = delete;
    IncomingFile& operator=(const IncomingFile&) = delete;
    ~IncomingFile();

    /// Never throws: what went wrong is told by finish, when the whole request has been read.
    void append(const char* data, std::size_t size) noexcept;
    /// Makes the file durable under its stored name. Refuses one that is empty, too large or could not be
    /// written.
    void finish();
    /// The database knows the file now, so that it belongs among the others; where it does not get there, the
    /// store finds it all the same.
    void keep() noexcept;

    const std::string& storedName() const { return name_; }
    std::uint64_t size() const { return size_; }
    /// Of a file that was finished, in Base64.
    const std::string& sha256() const { return sha256_; }

private:
    void close() noexcept;

    std::string name_;
    std::filesystem::path path_;
    std::filesystem::path files_;
    std::uint64_t maxSize_;
    std::uint64_t size_ = 0;
    Sha256 digest_;
    std::string sha256_;
    int descriptor_ = -1;
    int error_ = 0;
    bool kept_ = false;
};

/// Uploaded files on disk, under names of the platform's own making: a client's name is never part of a path.
/// A file comes in, is committed to the database, and only then goes among the others: what is there and not
/// known is none of the platform's making.
class FileStore
{
public:
    FileStore(const std::filesystem::path& directory, std::uint64_t maxSize);

    const std::filesystem::path& incoming() const { return incoming_; }
    const std::filesystem::path& files() const { return files_; }
    const std::filesystem::path& trash() const { return trash_; }
    std::uint64_t maxSize() const { return maxSize_; }

    OpenFile open(const std::string& storedName) const;
    /// Of a file that is still where it came in.
    void moveToFiles(const std::string& storedName) const;
    /// Of a file wherever it is.
    void moveToTrash(const std::string& storedName, const std::string& nameInTrash) const;
    void removeFromTrash(const std::string& nameInTrash) const;

    static bool isStoredName(const std::string& name);
    /// The names in the folder that the platform could have made.
    static std::vector<std::string> storedNames(const std::filesystem::path& folder);

private:
    std::filesystem::path incoming_;
    std::filesystem::path files_;
    std::filesystem::path trash_;
    std::uint64_t maxSize_;
};

} // namespace local_platform
