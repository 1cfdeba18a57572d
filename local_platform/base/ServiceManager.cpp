// SPDX-License-Identifier: MIT
#include "base/ServiceManager.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace local_platform {

void tellServiceManager(const std::string& state)
{
    const char* const name = std::getenv("NOTIFY_SOCKET");
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const std::size_t length = name ? std::strlen(name) : 0;
    if (length < 2 || length >= sizeof address.sun_path)
        return;
    std::copy_n(name, length, address.sun_path);
    if (address.sun_path[0] == '@') // of the abstract kind
        address.sun_path[0] = '\0';
    const int socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (socket < 0)
        return;
    ::sendto(socket, state.data(), state.size(), MSG_NOSIGNAL, reinterpret_cast<const sockaddr*>(&address),
        static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + length));
    ::close(socket);
}

bool logsToJournal()
{
    const char* const journal = std::getenv("JOURNAL_STREAM");
    struct stat status = {};
    return journal && ::fstat(STDERR_FILENO, &status) == 0
        && journal == std::to_string(status.st_dev) + ':' + std::to_string(status.st_ino);
}

} // namespace local_platform
