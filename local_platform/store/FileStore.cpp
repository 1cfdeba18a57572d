// SPDX-License-Identifier: MIT
#include "store/FileStore.h"

#include "base/Refusal.h"
#include "store/Disk.h"
#include "store/Secrets.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <spdlog/spdlog.h>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace local_platform {

namespace {

std::uint64_t sizeOf(int descriptor)
{
    struct stat status = {};
    if (::fstat(descriptor, &status) != 0)
        throwSystemError(errno, "fstat");
    return static_cast<std::uint64_t>(status.st_size);
}

} // namespace

OpenFile::OpenFile(int descriptor)
    : descriptor_(descriptor)
    , size_(sizeOf(descriptor))
{
}

OpenFile::OpenFile(OpenFile&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1))
    , size_(other.size_)
{
}

OpenFile::~OpenFile()
{
    if (descriptor_ >= 0)
        ::close(descriptor_);
}

long OpenFile::read(std::uint64_t offset, char* buffer, std::size_t size) const
{
    return ::pread(descriptor_, buffer, size, static_cast<off_t>(offset));
}

std::string digestOf(const OpenFile& file)
{
    Sha256 digest;
    std::vector<char> buffer(1u << 20);
    for (std::uint64_t at = 0; at < file.size();) {
        const long got = file.read(at, buffer.data(), buffer.size());
        if (got <= 0)
            throw std::runtime_error("A stored file cannot be read to its end");
        digest.add(buffer.data(), static_cast<std::size_t>(got));
        at += static_cast<std::uint64_t>(got);
    }
    return digest.finish();
}

IncomingFile::IncomingFile(
    const std::filesystem::path& incoming, const std::filesystem::path& files, std::uint64_t maxSize)
    : name_(randomToken())
    , path_(incoming / name_)
    , files_(files)
    , maxSize_(maxSize)
    , descriptor_(::open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600))
    , error_(descriptor_ < 0 ? errno : 0)
{
}

IncomingFile::~IncomingFile()
{
    close();
    if (!kept_)
        ::unlink(path_.c_str());
}

void IncomingFile::append(const char* data, std::size_t size) noexcept
{
    size_ += size;
    if (error_ == 0 && size_ <= maxSize_)
        digest_.add(data, size);
    while (size > 0 && error_ == 0 && size_ <= maxSize_) {
        const ssize_t written = ::write(descriptor_, data, size);
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0) {
            error_ = errno;
            return;
        }
        data += written;
        size -= static_cast<std::size_t>(written);
    }
}

void IncomingFile::finish()
{
    if (size_ == 0)
        throw Refusal("The uploaded file is empty");
    if (size_ > maxSize_)
        throw Refusal("The file is too large; at most " + std::to_string(maxSize_) + " bytes are taken", 413);
    if (error_ == 0 && ::fsync(descriptor_) != 0)
        error_ = errno;
    if (error_ == ENOSPC || error_ == EDQUOT)
        throw Refusal("The platform has no room left", 507);
    if (error_ != 0)
        throwSystemError(error_, "upload");
    sha256_ = digest_.finish();
    close();
    syncDirectory(path_.parent_path());
}

void IncomingFile::keep() noexcept
{
    kept_ = true;
    if (std::rename(path_.c_str(), (files_ / name_).c_str()) != 0)
        spdlog::warn("An upload stays in {}: {}", path_.parent_path().string(), std::strerror(errno));
}

void IncomingFile::close() noexcept
{
    if (descriptor_ >= 0)
        ::close(std::exchange(descriptor_, -1));
}

FileStore::FileStore(const std::filesystem::path& directory, std::uint64_t maxSize)
    : incoming_(directory / "incoming")
    , files_(directory / "files")
    , trash_(directory / "trash")
    , maxSize_(maxSize)
{
}

OpenFile FileStore::open(const std::string& storedName) const
{
    int descriptor = -1;
    // It moves from the one to the other, and may do so between the two looks.
    for (const auto& folder : {files_, incoming_, files_}) {
        descriptor = ::open((folder / storedName).c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
        if (descriptor >= 0 || errno != ENOENT)
            break;
    }
    if (descriptor < 0)
        throwSystemError(errno, (files_ / storedName).string());
    return OpenFile(descriptor);
}

void FileStore::moveToFiles(const std::string& storedName) const
{
    std::filesystem::rename(incoming_ / storedName, files_ / storedName);
}

void FileStore::moveToTrash(const std::string& storedName, const std::string& nameInTrash) const
{
    const bool arrived = std::filesystem::exists(std::filesystem::symlink_status(files_ / storedName));
    std::filesystem::rename((arrived ? files_ : incoming_) / storedName, trash_ / nameInTrash);
}

void FileStore::removeFromTrash(const std::string& nameInTrash) const
{
    std::filesystem::remove(trash_ / nameInTrash);
}

bool FileStore::isStoredName(const std::string& name)
{
    return looksLikeToken(name);
}

std::vector<std::string> FileStore::storedNames(const std::filesystem::path& folder)
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        if (const std::string name = entry.path().filename().string(); isStoredName(name))
            names.push_back(name);
    return names;
}

} // namespace local_platform
