// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <list>
#include <mutex>
#include <string>

namespace local_platform {

/// A fixed number of places for long work. Whoever wants one waits in line with the others of the same
/// client, and the clients take turns: many requests of one do not keep another's waiting.
class Turns
{
public:
    Turns(unsigned places, std::size_t longestQueue)
        : free_(places)
        , longestQueue_(longestQueue)
    {
    }

    /// How many wait.
    std::size_t waiting() const
    {
        const std::lock_guard lock(mutex_);
        return waiting_;
    }

    enum class Outcome
    {
        Waiting,
        Taken,
        Full, ///< too many wait, and none of them is in a longer line
        TooLate,
        Unwanted
    };

    /// One place, given back with this object.
    class Turn
    {
    public:
        /// @param isWanted asked from time to time
        Turn(Turns& turns, const std::string& client, std::chrono::steady_clock::time_point deadline,
            const std::function<bool()>& isWanted)
            : turns_(turns)
        {
            std::unique_lock lock(turns_.mutex_);
            turns_.enter(*this, client);
            while (outcome_ == Outcome::Waiting) {
                const auto now = std::chrono::steady_clock::now();
                if (now >= deadline)
                    turns_.leave(*this, client, Outcome::TooLate);
                else if (!isWanted())
                    turns_.leave(*this, client, Outcome::Unwanted);
                else
                    woken_.wait_until(lock, std::min(deadline, now + std::chrono::milliseconds(200)));
            }
        }
        ~Turn()
        {
            if (outcome_ != Outcome::Taken)
                return;
            const std::lock_guard lock(turns_.mutex_);
            turns_.pass();
        }
        Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;

        Outcome outcome() const { return outcome_; }

    private:
        friend class Turns;

        void end(Outcome outcome)
        {
            outcome_ = outcome;
            woken_.notify_one();
        }

        Turns& turns_;
        Outcome outcome_ = Outcome::Waiting;
        std::condition_variable woken_;
    };

private:
    struct Line
    {
        std::string client;
        std::deque<Turn*> turns;
    };

    std::list<Line>::iterator lineOf(const std::string& client)
    {
        return std::find_if(
            lines_.begin(), lines_.end(), [&](const Line& line) { return line.client == client; });
    }

    void enter(Turn& turn, const std::string& client)
    {
        if (free_ > 0) {
            --free_;
            turn.outcome_ = Outcome::Taken;
            return;
        }
        auto line = lineOf(client);
        const std::size_t before = line == lines_.end() ? 0 : line->turns.size();
        if (waiting_ == longestQueue_ && !makeRoomFor(before)) {
            turn.outcome_ = Outcome::Full;
            return;
        }
        if (line == lines_.end())
            line = lines_.insert(line, {client, {}});
        line->turns.push_back(&turn);
        ++waiting_;
    }

    /// Sends the last of the longest line away, if that is longer than one will be of so many.
    bool makeRoomFor(std::size_t before)
    {
        const auto longest = std::max_element(lines_.begin(), lines_.end(),
            [](const Line& one, const Line& other) { return one.turns.size() < other.turns.size(); });
        if (longest == lines_.end() || longest->turns.size() <= before + 1)
            return false;
        longest->turns.back()->end(Outcome::Full);
        longest->turns.pop_back();
        --waiting_;
        return true;
    }

    void leave(Turn& turn, const std::string& client, Outcome why)
    {
        const auto line = lineOf(client);
        line->turns.erase(std::find(line->turns.begin(), line->turns.end(), &turn));
        if (line->turns.empty())
            lines_.erase(line);
        --waiting_;
        turn.outcome_ = why;
    }

    /// Gives a place to the next client, which is the last one then.
    void pass()
    {
        if (lines_.empty()) {
            ++free_;
            return;
        }
        Line& next = lines_.front();
        next.turns.front()->end(Outcome::Taken);
        next.turns.pop_front();
        --waiting_;
        if (next.turns.empty())
            lines_.pop_front();
        else
            lines_.splice(lines_.end(), lines_, lines_.begin());
    }

    mutable std::mutex mutex_;
    unsigned free_;
    const std::size_t longestQueue_;
    std::size_t waiting_ = 0;
    std::list<Line> lines_; ///< none is empty; the first has the next turn
};

} // namespace local_platform
