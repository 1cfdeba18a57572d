// SPDX-License-Identifier: MIT
#include "store/Disk.h"

#include <cerrno>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace local_platform {

namespace {

/// Closes a descriptor with this object.
struct Descriptor
{
    Descriptor(const std::filesystem::path& path, int flags)
        : number(::open(path.c_str(), flags | O_CLOEXEC | O_NOFOLLOW, 0600))
    {
        if (number < 0)
            throwSystemError(errno, path.string());
    }
    ~Descriptor() { ::close(number); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    const int number;
};

void sync(const Descriptor& descriptor, const std::filesystem::path& path)
{
    if (::fsync(descriptor.number) != 0)
        throwSystemError(errno, path.string());
}

void writeAll(
    const Descriptor& descriptor, const char* data, std::size_t size, const std::filesystem::path& path)
{
    while (size > 0) {
        const ssize_t written = ::write(descriptor.number, data, size);
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0)
            throwSystemError(errno, path.string());
        data += written;
        size -= static_cast<std::size_t>(written);
    }
}

} // namespace

void throwSystemError(int error, const std::string& what)
{
    throw std::system_error(error, std::generic_category(), what);
}

void syncDirectory(const std::filesystem::path& directory)
{
    sync(Descriptor(directory, O_RDONLY | O_DIRECTORY), directory);
}

void syncFile(const std::filesystem::path& file)
{
    sync(Descriptor(file, O_RDONLY), file);
}

void writeWhole(const std::filesystem::path& file, const std::string& content)
{
    std::filesystem::path unfinished = file;
    unfinished += ".unfinished";
    {
        const Descriptor to(unfinished, O_WRONLY | O_CREAT | O_TRUNC);
        writeAll(to, content.data(), content.size(), unfinished);
        sync(to, unfinished);
    }
    std::filesystem::rename(unfinished, file);
    syncDirectory(file.parent_path());
}

void copyDurably(const std::filesystem::path& from, const std::filesystem::path& to)
{
    const Descriptor source(from, O_RDONLY);
    const Descriptor target(to, O_WRONLY | O_CREAT | O_EXCL);
    std::vector<char> buffer(1u << 20);
    while (true) {
        const ssize_t got = ::read(source.number, buffer.data(), buffer.size());
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            throwSystemError(errno, from.string());
        if (got == 0)
            break;
        writeAll(target, buffer.data(), static_cast<std::size_t>(got), to);
    }
    sync(target, to);
}

} // namespace local_platform
