// SPDX-License-Identifier: MIT
#include "http/Workers.h"

#include <algorithm>
#include <sys/resource.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace local_platform {

Workers::Workers()
    // Threads are made when they are needed first. A client has one task at a time.
    : queues_{Queue{64, 1u << 20}, Queue{32, 1024}, Queue{64, 64}, Queue{8, 1u << 20}, Queue{8, 1u << 20},
        Queue{std::max(1u, std::thread::hardware_concurrency()), 1u << 20, true}}
{
}

Workers::~Workers()
{
    stop(std::chrono::steady_clock::time_point::max());
}

bool Workers::run(Lane lane, Task task)
{
    Queue& queue = queues_[static_cast<std::size_t>(lane)];
    const std::lock_guard lock(mutex_);
    if (stopping_ || queue.tasks.size() >= queue.mostWaiting)
        return false;
    queue.tasks.push_back(std::move(task));
    if (queue.idle >= queue.tasks.size() || queue.threads == queue.mostThreads) {
        queue.added.notify_one();
    } else {
        try {
            threads_.emplace_back([this, &queue] { work(queue); });
            ++queue.threads;
            ++running_;
        } catch (const std::system_error&) {
            // The system has no thread left; those that there are do it later.
            if (queue.threads == 0) {
                queue.tasks.pop_back();
                return false;
            }
        }
    }
    return true;
}

void Workers::work(Queue& queue)
{
    constexpr int lowPriority = 5;
    if (queue.givesWay)
        ::setpriority(PRIO_PROCESS, static_cast<id_t>(::gettid()), lowPriority);
    std::unique_lock lock(mutex_);
    for (;;) {
        ++queue.idle;
        queue.added.wait(lock, [&] { return stopping_ || !queue.tasks.empty(); });
        --queue.idle;
        if (queue.tasks.empty())
            break;
        {
            const Task task = std::move(queue.tasks.front());
            queue.tasks.pop_front();
            lock.unlock();
            task();
        }
        lock.lock();
    }
    --running_;
    ended_.notify_all();
}

bool Workers::stop(std::chrono::steady_clock::time_point end)
{
    std::unique_lock lock(mutex_);
    stopping_ = true;
    for (Queue& queue : queues_)
        queue.added.notify_all();
    const auto allEnded = [this] { return running_ == 0; };
    if (end == std::chrono::steady_clock::time_point::max())
        ended_.wait(lock, allEnded);
    else if (!ended_.wait_until(lock, end, allEnded))
        return false;
    lock.unlock();
    for (std::thread& thread : std::exchange(threads_, {}))
        thread.join();
    return true;
}

} // namespace local_platform
