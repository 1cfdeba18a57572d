// SPDX-License-Identifier: MIT
#pragma once

#include "http/Front.h"
#include "http/HeadScan.h"
#include "http/Pace.h"
#include "http/RequestParser.h"
#include "http/Response.h"

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_set>

namespace local_platform {

/// One client's connection. All of it runs in the one thread of its loop; only what may block runs in the
/// workers, and while it does, nothing else happens here.
class Connection : public std::enable_shared_from_this<Connection>
{
public:
    using Socket = boost::asio::ip::tcp::socket;
    /// Those of one loop.
    using Set = std::unordered_set<std::shared_ptr<Connection>>;

    /// @param address counted already; given back at the end
    Connection(Front& front, Set& all, Socket socket, std::string address);
    ~Connection();

    void start();
    /// Ends it when it is idle, or else with the response that is on its way.
    void endSoon();
    /// Ends it now.
    void close();

private:
    enum class State
    {
        Handshake,
        Head,
        Body,
        Working, ///< in the workers
        Responding,
        Lingering, ///< until the client has read the last response
        Closed
    };
    using Step = void (Connection::*)();
    using Time = std::chrono::steady_clock::time_point;
    class Watch;

    // The steps. Each goes on until it has to wait.
    void shakeHands();
    void shookHands();
    void readHead();
    void readBody();
    void write();
    void linger();

    void beginRequest(std::size_t headSize);
    void parseContent();
    void admit();
    void admitted();
    void beginBody();
    void bodyEnded();
    void answer();
    void respond(Response response);
    /// Ends the connection too: where the next request would begin is not known any more.
    void refuse(const Refusal& refusal);
    void readPart();
    void writePart();
    void responseEnded();
    void beginLingering();

    // Among the workers.
    void takeContent();
    void decide(const std::function<std::optional<Response>()>& make);
    Response endpointsResponse();

    /// False where there is nothing to read by now, or ever; that is seen to.
    bool read(Step again);
    void wait(Socket::wait_type what, Step next);
    /// Lets other connections of the loop have their turn.
    void yield(Step next);
    void go(Step step);
    /// Runs \a task among the workers and then \a next here.
    void work(Lane lane, std::function<void()> task, Step next);

    void setDeadline(Time deadline);
    void scheduleTimer();
    void timerEnded();
    void outOfTime();
    std::uint64_t moved() const;

    Front& front_;
    Set& all_;
    Socket socket_;
    const std::string address_;
    const std::shared_ptr<Watch> watch_;
    std::unique_ptr<Transport> transport_;
    Transport::Outcome handshake_ = Transport::Outcome::Failed;
    Time::duration handshakeTime_ = {}; ///< that is left; the wait for a worker does not count
    bool isShaking_ = false; ///< in the workers
    State state_ = State::Handshake;

    boost::asio::steady_timer timer_;
    Time deadline_ = Time::max();
    std::optional<Time> scheduled_;
    Pace pace_;
    unsigned turn_ = 0; ///< a wait of an earlier turn is over
    bool paced_ = false;

    std::string received_; ///< and not used yet
    HeadScan scan_;
    bool headBegan_ = false;
    std::uint64_t bytesRead_ = 0;
    std::uint64_t bytesWritten_ = 0;
    std::uint64_t mayLinger_ = 0; ///< bytes that are read off at the end
    int served_ = 0;

    // Of one request.
    std::unique_ptr<RequestParser> parser_;
    std::shared_ptr<Call> call_;
    const Route* route_ = nullptr;
    Intake* intake_ = nullptr;
    std::string content_; ///< of the body, not taken in yet
    std::uint64_t contentSize_ = 0;
    std::optional<Response> early_; ///< decided before the body is all there
    bool awaitsContinue_ = false;
    bool keepsAlive_ = false;
    bool onlyHead_ = false;
    Time began_;

    Step afterWriting_ = nullptr;
    std::string out_;
    std::size_t outAt_ = 0;
    std::shared_ptr<OpenFile> file_;
    std::uint64_t fileAt_ = 0;
    std::uint64_t fileLeft_ = 0;
};

} // namespace local_platform
