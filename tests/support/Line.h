// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <list>
#include <mutex>
#include <thread>

/// What a line is like, the same in both directions.
struct LineSettings
{
    double bitsPerSecond = 0; ///< 0 for no limit
    std::chrono::milliseconds delay{0}; ///< each way
    /// After how many bytes of a connection, in one direction, it is lost, or stands still.
    std::int64_t cutAfter = -1;
    std::int64_t stallAfter = -1;
};

/// A line to a server on a loopback port: a relay with a bandwidth that its connections share, a delay, and
/// faults. The delay holds for a connection's beginning too. What is on the line is bounded, so a sender
/// cannot get rid of its bytes faster than the line takes them, but for what the system's own buffers hold.
class Line
{
public:
    /// \param port where clients find it; 0 for any
    Line(std::uint16_t serverPort, const LineSettings& settings, std::uint16_t port = 0);
    /// Cuts what is connected.
    ~Line();
    Line(const Line&) = delete;
    Line& operator=(const Line&) = delete;

    std::uint16_t port() const { return ownPort; }
    /// For the connections from here on.
    void set(const LineSettings& settings);
    void setServer(std::uint16_t port) { serverPort = port; }
    /// Over how many connections a client has sent something.
    int connections() const { return used; }

private:
    using Clock = std::chrono::steady_clock;

    /// When the bytes that are sent next can start, in a direction.
    struct Direction
    {
        std::mutex mutex;
        Clock::time_point free{};
    };
    struct Connection
    {
        int client;
        int server;
        std::atomic<int> ended{0};
        std::thread up, down;
    };

    void listen();
    void carry(Connection& connection, int from, int to, Direction& direction, LineSettings settings);

    std::atomic<std::uint16_t> serverPort;
    std::uint16_t ownPort = 0;
    int listener = -1;
    std::atomic<bool> ending{false};
    std::atomic<int> used{0};
    std::mutex changing;
    LineSettings current;
    Direction upwards, downwards;
    std::list<Connection> all;
    std::thread listening;
};
