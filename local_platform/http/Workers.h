// SPDX-License-Identifier: MIT
#pragma once

#include "http/Lane.h"

#include <array>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace local_platform {

/// Threads for what may block. None of them ever waits for a client.
class Workers
{
public:
    using Task = std::function<void()>;

    Workers();
    ~Workers();
    Workers(const Workers&) = delete;
    Workers& operator=(const Workers&) = delete;

    /// False where too many tasks wait in the lane already.
    /// @param task must not throw
    bool run(Lane lane, Task task);
    /// Waits for what is being done, no longer than \a end. False where something is not done by then.
    bool stop(std::chrono::steady_clock::time_point end);

private:
    struct Queue
    {
        std::size_t mostThreads;
        std::size_t mostWaiting;
        bool givesWay = false; ///< to all other lanes, where processors are short
        std::deque<Task> tasks = {};
        std::size_t threads = 0;
        std::size_t idle = 0;
        std::condition_variable added = {};
    };

    void work(Queue& queue);

    std::mutex mutex_;
    std::condition_variable ended_;
    std::array<Queue, 6> queues_;
    std::size_t running_ = 0;
    bool stopping_ = false;
    std::vector<std::thread> threads_;
};

} // namespace local_platform
