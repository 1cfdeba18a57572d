// SPDX-License-Identifier: MIT
#include "store/FileStore.h"

#include "base/Refusal.h"
#include "store/Secrets.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace local_platform {

namespace {

[[noreturn]] void throwSystemError(int error, const std::string& what)
{
    throw std::system_error(error, std::generic_category(), what);
}

void syncDirectory(const std::filesystem::path& directory)
{
    const int descriptor = ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        throwSystemError(errno, directory.string());
    const int error = ::fsync(descriptor) == 0 ? 0 : errno;
    ::close(descriptor);
    if (error != 0)
        throwSystemError(error, directory.string());
}

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

void IncomingFile::publish()
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
    std::filesystem::rename(path_, files_ / name_);
    path_ = files_ / name_;
    syncDirectory(files_);
}

void IncomingFile::close() noexcept
{
    if (descriptor_ >= 0)
        ::close(std::exchange(descriptor_, -1));
}

FileStore::FileStore(const std::filesystem::path& directory, std::uint64_t maxSize)
    : incoming_(directory / "incoming")
    , files_(directory / "files")
    , maxSize_(maxSize)
{
    std::filesystem::create_directories(incoming_);
    std::filesystem::create_directories(files_);
    syncDirectory(directory);
}

OpenFile FileStore::open(const std::string& storedName) const
{
    const std::filesystem::path path = files_ / storedName;
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        throwSystemError(errno, path.string());
    return OpenFile(descriptor);
}

void FileStore::remove(const std::string& storedName) const
{
    std::error_code ignored; // what stays is removed at the next start
    std::filesystem::remove(files_ / storedName, ignored);
}

int FileStore::removeOrphans(const std::set<std::string>& known) const
{
    std::set<std::filesystem::path> orphans;
    for (const auto& entry : std::filesystem::directory_iterator(incoming_))
        orphans.insert(entry.path());
    for (const auto& entry : std::filesystem::directory_iterator(files_)) {
        if (known.count(entry.path().filename().string()) == 0)
            orphans.insert(entry.path());
    }
    for (const std::filesystem::path& orphan : orphans)
        std::filesystem::remove(orphan);
    return static_cast<int>(orphans.size());
}

} // namespace local_platform
