// SPDX-License-Identifier: MIT
#include "support/Line.h"

#include <algorithm>
#include <arpa/inet.h>
#include <deque>
#include <netinet/tcp.h>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace {

using std::chrono::duration_cast;
using std::chrono::microseconds;
using std::chrono::milliseconds;

constexpr auto longestWait = milliseconds(50); // until the end of the line is seen
constexpr auto queued = milliseconds(20); // of bytes before the line's narrowest place, as a router has it
constexpr std::size_t largestPiece = 64 << 10;
constexpr std::size_t smallestPiece = 1460;

sockaddr_in loopback(std::uint16_t port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

int tcpSocket(const LineSettings& settings)
{
    const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int on = 1;
    ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    // Else the system takes megabytes at once, whatever the line carries.
    const double onTheLine =
        settings.bitsPerSecond / 8 * 2 * duration_cast<microseconds>(settings.delay).count() / 1e6;
    const int buffer = int(std::clamp(onTheLine, 128.0 * 1024, 4.0 * 1024 * 1024));
    if (settings.bitsPerSecond > 0)
        ::setsockopt(fd, SOL_SOCKET, SO_RCVBUF, &buffer, sizeof buffer);
    return fd;
}

bool isReady(int fd, short events, microseconds patience)
{
    pollfd one{fd, events, 0};
    const timespec time{0, long(std::min<microseconds>(patience, longestWait).count() * 1000)};
    return ::ppoll(&one, 1, &time, nullptr) > 0;
}

/// Without a reset, which would take back what has come already.
void cut(int fd)
{
    ::shutdown(fd, SHUT_RDWR);
}

} // namespace

Line::Line(std::uint16_t server, const LineSettings& settings, std::uint16_t port)
    : serverPort(server)
    , listener(tcpSocket(settings))
    , current(settings)
{
    const int on = 1;
    ::setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    sockaddr_in address = loopback(port);
    socklen_t size = sizeof address;
    if (::bind(listener, reinterpret_cast<sockaddr*>(&address), size) != 0 || ::listen(listener, 64) != 0)
        throw std::system_error(errno, std::generic_category(), "the line's own port");
    ::getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size);
    ownPort = ntohs(address.sin_port);
    listening = std::thread([this] { listen(); });
}

Line::~Line()
{
    ending = true;
    listening.join();
    for (Connection& connection : all) {
        connection.up.join();
        connection.down.join();
    }
    ::close(listener);
}

void Line::set(const LineSettings& settings)
{
    const std::lock_guard lock(changing);
    current = settings;
}

void Line::listen()
{
    while (!ending) {
        if (!isReady(listener, POLLIN, longestWait))
            continue;
        const int client = ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (client < 0)
            continue;
        const LineSettings settings = [this] {
            const std::lock_guard lock(changing);
            return current;
        }();
        const int server = tcpSocket(settings);
        const sockaddr_in address = loopback(serverPort);
        if (::connect(server, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
            cut(client);
            ::close(client);
            ::close(server);
            continue;
        }
        const int on = 1;
        ::setsockopt(client, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        Connection& connection = all.emplace_back();
        connection.client = client;
        connection.server = server;
        connection.up =
            std::thread([=, &connection] { carry(connection, client, server, upwards, settings); });
        connection.down =
            std::thread([=, &connection] { carry(connection, server, client, downwards, settings); });
    }
}

/// One direction of a connection, until its sender ends it or the line does.
void Line::carry(Connection& connection, int from, int to, Direction& direction, LineSettings settings)
{
    struct Piece
    {
        Clock::time_point due;
        std::string bytes; // none: the sender's end
    };
    const double bytesPerSecond = settings.bitsPerSecond / 8;
    const auto begin = Clock::now() + 2 * settings.delay; // the connection is made by then
    const std::size_t pieceSize = bytesPerSecond > 0
        ? std::clamp(std::size_t(bytesPerSecond * 0.002), smallestPiece, largestPiece)
        : largestPiece;
    std::vector<char> buffer(pieceSize);
    std::deque<Piece> onTheWay;
    std::size_t bytesOnTheWay = 0;
    std::int64_t carried = 0;
    bool hasEnd = false;
    bool isLost = false;

    while (!ending && !isLost && !(hasEnd && onTheWay.empty())) {
        const auto now = Clock::now();
        if (!onTheWay.empty() && onTheWay.front().due <= now) {
            const Piece piece = std::move(onTheWay.front());
            onTheWay.pop_front();
            bytesOnTheWay -= piece.bytes.size();
            if (piece.bytes.empty())
                ::shutdown(to, SHUT_WR);
            for (std::size_t sent = 0; sent < piece.bytes.size() && !ending && !isLost;) {
                if (!isReady(to, POLLOUT, longestWait))
                    continue;
                const ssize_t got = ::send(
                    to, piece.bytes.data() + sent, piece.bytes.size() - sent, MSG_NOSIGNAL | MSG_DONTWAIT);
                isLost = got <= 0 && errno != EAGAIN;
                sent += std::size_t(std::max<ssize_t>(got, 0));
            }
            continue;
        }
        auto room = now;
        if (bytesPerSecond > 0) {
            const std::lock_guard lock(direction.mutex);
            room = direction.free - queued;
        }
        const bool stands = settings.stallAfter >= 0 && carried >= settings.stallAfter;
        const bool mayRead = !hasEnd && !stands && now >= begin - 2 * settings.delay && room <= now
            && (bytesPerSecond > 0 || bytesOnTheWay < 16 * largestPiece);
        microseconds patience = longestWait;
        if (!onTheWay.empty())
            patience = std::min(patience, duration_cast<microseconds>(onTheWay.front().due - now));
        if (!mayRead) {
            if (room > now)
                patience = std::min(patience, duration_cast<microseconds>(room - now));
            std::this_thread::sleep_for(patience);
            continue;
        }
        if (!isReady(from, POLLIN, patience))
            continue;
        std::size_t wanted = buffer.size();
        for (const std::int64_t limit : {settings.cutAfter, settings.stallAfter}) {
            if (limit >= 0)
                wanted = std::min(wanted, std::size_t(limit - carried));
        }
        if (wanted == 0) { // cutAfter
            isLost = true;
            break;
        }
        const ssize_t got = ::recv(from, buffer.data(), wanted, 0);
        if (got < 0) {
            isLost = true;
            break;
        }
        if (from == connection.client && carried == 0 && got > 0)
            ++used;
        carried += got;
        hasEnd = got == 0;
        auto start = std::max(Clock::now(), begin);
        if (bytesPerSecond > 0) {
            const std::lock_guard lock(direction.mutex);
            direction.free = std::max(start, direction.free)
                + std::chrono::nanoseconds(std::int64_t(1e9 * double(got) / bytesPerSecond));
            start = direction.free;
        }
        bytesOnTheWay += std::size_t(got);
        onTheWay.push_back({start + settings.delay, std::string(buffer.data(), std::size_t(got))});
    }
    if (isLost || ending) {
        cut(from);
        cut(to);
    }
    if (++connection.ended == 2) {
        ::close(connection.client);
        ::close(connection.server);
    }
}
