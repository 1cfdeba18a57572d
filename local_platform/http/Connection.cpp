// SPDX-License-Identifier: MIT
#include "http/Connection.h"

#include <algorithm>
#include <array>
#include <boost/asio/post.hpp>
#include <mutex>
#include <netinet/tcp.h>
#include <poll.h>
#include <spdlog/spdlog.h>
#include <utility>

namespace local_platform {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int idleSeconds = 5;
// A client that keeps to what it was told never sends into a connection that is just being closed.
constexpr auto idleTime = std::chrono::seconds(idleSeconds + 1);
constexpr auto lingerTime = std::chrono::seconds(2);
constexpr std::uint64_t lingerBytes = 1u << 20;
constexpr int mostRequests = 1000;
constexpr std::size_t pieceSize = 64u << 10;
constexpr std::size_t filePieceSize = 128u << 10;
constexpr int mostUnsent = 256 << 10; // in the kernel
constexpr int turnsAtOnce = 16;
constexpr int busySeconds = 5;

Refusal tooLarge(std::uint64_t limit)
{
    return Refusal("The request is too large; at most " + std::to_string(limit) + " bytes are taken", 413);
}

Refusal cutShort()
{
    return Refusal("The request was cut short or is malformed");
}

} // namespace

/// Asks the socket while there is one.
class Connection::Watch : public Audience
{
public:
    explicit Watch(int socket)
        : socket_(socket)
    {
    }

    bool isGone() const override
    {
        const std::lock_guard lock(mutex_);
        struct pollfd wanted = {socket_, POLLRDHUP, 0};
        return socket_ < 0 || (::poll(&wanted, 1, 0) > 0 && wanted.revents != 0);
    }

    void leave()
    {
        const std::lock_guard lock(mutex_);
        socket_ = -1;
    }

private:
    mutable std::mutex mutex_;
    int socket_;
};

Connection::Connection(Front& front, Set& all, Socket socket, std::string address)
    : front_(front)
    , all_(all)
    , socket_(std::move(socket))
    , address_(std::move(address))
    , watch_(std::make_shared<Watch>(socket_.native_handle()))
    , timer_(socket_.get_executor())
    , pace_(front.limits.stallTime, FrontLimits::slowestRate)
{
}

Connection::~Connection()
{
    front_.counts.remove(networkOf(address_));
}

void Connection::start()
{
    all_.insert(shared_from_this());
    boost::system::error_code ignored;
    socket_.set_option(boost::asio::ip::tcp::no_delay(true), ignored);
    ::setsockopt(socket_.native_handle(), IPPROTO_TCP, TCP_NOTSENT_LOWAT, &mostUnsent, sizeof mostUnsent);
    socket_.native_non_blocking(true, ignored);
    transport_ = std::make_unique<Transport>(front_.tls.get(), socket_.native_handle());
    setDeadline(Clock::now() + front_.limits.headTime);
    if (front_.tls)
        return wait(Socket::wait_read, &Connection::shakeHands);
    state_ = State::Head;
    go(&Connection::readHead);
}

/// Among the workers, as each takes the processor for a while: many that come at once would make all others
/// wait.
void Connection::shakeHands()
{
    handshakeTime_ = deadline_ - Clock::now();
    isShaking_ = true;
    work(
        Lane::Handshake, [this] { handshake_ = transport_->handshake(); }, &Connection::shookHands);
}

void Connection::shookHands()
{
    isShaking_ = false;
    state_ = State::Handshake;
    setDeadline(Clock::now() + handshakeTime_);
    switch (handshake_) {
    case Transport::Outcome::Done:
        state_ = State::Head;
        return readHead();
    case Transport::Outcome::WantsRead:
        return wait(Socket::wait_read, &Connection::shakeHands);
    case Transport::Outcome::WantsWrite:
        return wait(Socket::wait_write, &Connection::shakeHands);
    default:
        close();
    }
}

void Connection::readHead()
{
    for (;;) {
        if (!headBegan_ && !received_.empty()) {
            headBegan_ = true;
            if (served_ > 0) // the time of the first counts from the beginning
                setDeadline(Clock::now() + front_.limits.headTime);
        }
        if (const std::size_t size = scan_.endOf(received_))
            return beginRequest(size);
        if (!read(&Connection::readHead))
            return;
    }
}

void Connection::beginRequest(std::size_t headSize)
{
    began_ = Clock::now();
    parser_ = std::make_unique<RequestParser>();
    Request request = parser_->head(received_.substr(0, headSize));
    received_.erase(0, headSize);
    request.address = address_;
    keepsAlive_ = request.keepsAlive && ++served_ < mostRequests;
    onlyHead_ = request.method == "HEAD";
    awaitsContinue_ = request.awaitsContinue;
    const std::uint64_t size = request.bodySize;
    call_ = std::make_shared<Call>(std::move(request), watch_);
    if (size > front_.limits.largestBody) {
        if (!awaitsContinue_)
            mayLinger_ = 4 * front_.limits.largestBody;
        throw tooLarge(front_.limits.largestBody);
    }
    parseContent();
    admit();
}

void Connection::parseContent()
{
    const std::size_t before = content_.size();
    parser_->body(received_, content_);
    contentSize_ += content_.size() - before;
    if (contentSize_ > front_.limits.largestBody) {
        mayLinger_ = 4 * front_.limits.largestBody;
        throw tooLarge(front_.limits.largestBody);
    }
    if (early_)
        content_.clear();
}

void Connection::admit()
{
    const auto task = [this] {
        decide([this]() -> std::optional<Response> {
            route_ = &front_.admit(*call_);
            intake_ = call_->takeBodyAs(route_->body);
            if (!parser_->isDone() || route_->lane != Lane::Usual)
                return std::nullopt;
            return endpointsResponse();
        });
    };
    work(Lane::Usual, task, &Connection::admitted);
}

void Connection::admitted()
{
    if (parser_->isDone())
        return bodyEnded();
    if (!awaitsContinue_ || contentSize_ > 0)
        return beginBody();
    if (early_) {
        keepsAlive_ = false; // the client may send the body all the same, or not
        return respond(std::move(*early_));
    }
    out_ = "HTTP/1.1 100 Continue\r\n\r\n";
    afterWriting_ = &Connection::beginBody;
    state_ = State::Responding;
    paced_ = true;
    pace_.restart(moved());
    write();
}

void Connection::beginBody()
{
    state_ = State::Body;
    paced_ = true;
    pace_.restart(moved());
    readBody();
}

void Connection::readBody()
{
    state_ = State::Body;
    for (int turn = 0; turn < turnsAtOnce; ++turn) {
        parseContent();
        if (parser_->isDone())
            return bodyEnded();
        if (intake_ && !intake_->isOnDisk())
            takeContent();
        if (content_.size() >= pieceSize)
            return work(
                Lane::Receiving, [this] { takeContent(); }, &Connection::readBody);
        if (!read(&Connection::readBody))
            return;
    }
    yield(&Connection::readBody);
}

void Connection::bodyEnded()
{
    if (early_)
        respond(std::move(*early_));
    else
        answer();
}

void Connection::answer()
{
    const auto task = [this] { decide([this] { return endpointsResponse(); }); };
    work(route_->lane, task, &Connection::bodyEnded);
}

void Connection::takeContent()
{
    if (intake_ && !early_ && !content_.empty())
        try {
            intake_->append(content_.data(), content_.size());
        } catch (const std::exception& error) {
            spdlog::error("{} {}: {}", call_->method(), call_->path(), error.what());
            early_ = failureOfPlatform();
        }
    content_.clear();
}

void Connection::decide(const std::function<std::optional<Response>()>& make)
{
    try {
        early_ = make();
    } catch (const Refusal& refusal) {
        early_ = responseTo(refusal);
    } catch (const std::exception& error) {
        spdlog::error("{} {}: {}", call_->method(), call_->path(), error.what());
        early_ = failureOfPlatform();
    }
}

Response Connection::endpointsResponse()
{
    takeContent();
    return early_ ? std::move(*early_) : responseTo(route_->endpoint(*call_), *call_);
}

void Connection::refuse(const Refusal& refusal)
{
    keepsAlive_ = false;
    respond(responseTo(refusal));
}

void Connection::respond(Response response)
{
    if (front_.stopping)
        keepsAlive_ = false;
    // No query and no body: both may hold what only the user should know.
    const auto took = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - began_);
    if (call_)
        spdlog::debug("{} {} {} in {} ms", call_->method(), call_->path(), response.status, took.count());
    else
        spdlog::debug("A request without a sound head: {}", response.status);
    state_ = State::Responding;
    paced_ = true;
    pace_.restart(moved());
    const std::string head = headOf(response, keepsAlive_ ? idleSeconds : 0);
    out_ = onlyHead_ ? std::string() : std::move(response.body);
    out_.insert(0, head);
    file_ = onlyHead_ ? nullptr : std::move(response.file);
    fileAt_ = response.fileAt;
    fileLeft_ = file_ ? response.fileSize : 0;
    afterWriting_ = &Connection::responseEnded;
    write();
}

void Connection::write()
{
    state_ = State::Responding;
    while (outAt_ < out_.size()) {
        std::size_t written = 0;
        switch (transport_->write(out_.data() + outAt_, out_.size() - outAt_, written)) {
        case Transport::Outcome::Done:
            outAt_ += written;
            bytesWritten_ += written;
            break;
        case Transport::Outcome::WantsRead:
            return wait(Socket::wait_read, &Connection::write);
        case Transport::Outcome::WantsWrite:
            return wait(Socket::wait_write, &Connection::write);
        default:
            return close();
        }
    }
    out_.clear();
    outAt_ = 0;
    if (fileLeft_ > 0)
        return readPart();
    (this->*std::exchange(afterWriting_, nullptr))();
}

void Connection::readPart()
{
    const auto task = [this] {
        out_.resize(std::min<std::uint64_t>(fileLeft_, filePieceSize));
        const long got = file_->read(fileAt_, out_.data(), out_.size());
        out_.resize(static_cast<std::size_t>(std::max(got, 0L)));
        fileAt_ += out_.size();
        fileLeft_ -= out_.size();
        if (out_.empty())
            spdlog::error("{} {}: a stored file ended early", call_->method(), call_->path());
    };
    work(Lane::Sending, task, &Connection::writePart);
}

void Connection::writePart()
{
    if (out_.empty())
        return close(); // the client knows by the length
    write();
}

void Connection::responseEnded()
{
    call_.reset();
    parser_.reset();
    file_.reset();
    early_.reset();
    route_ = nullptr;
    intake_ = nullptr;
    out_ = std::string();
    content_ = std::string();
    contentSize_ = 0;
    onlyHead_ = false;
    if (!keepsAlive_ || front_.stopping)
        return beginLingering();
    received_.shrink_to_fit();
    state_ = State::Head;
    paced_ = false;
    headBegan_ = false;
    setDeadline(Clock::now() + idleTime);
    readHead();
}

void Connection::beginLingering()
{
    state_ = State::Lingering;
    paced_ = mayLinger_ > 0;
    pace_.restart(moved());
    if (!paced_) {
        mayLinger_ = lingerBytes;
        setDeadline(Clock::now() + lingerTime);
    }
    transport_->shutDown();
    linger();
}

void Connection::linger()
{
    for (int turn = 0; turn < turnsAtOnce; ++turn) {
        mayLinger_ -= std::min<std::uint64_t>(mayLinger_, received_.size());
        received_.clear();
        if (mayLinger_ == 0)
            return close();
        if (!read(&Connection::linger))
            return;
    }
    yield(&Connection::linger);
}

bool Connection::read(Step again)
{
    thread_local std::array<char, pieceSize> buffer;
    std::size_t got = 0;
    switch (transport_->read(buffer.data(), buffer.size(), got)) {
    case Transport::Outcome::Done:
        received_.append(buffer.data(), got);
        bytesRead_ += got;
        return true;
    case Transport::Outcome::WantsRead:
        wait(Socket::wait_read, again);
        return false;
    case Transport::Outcome::WantsWrite:
        wait(Socket::wait_write, again);
        return false;
    case Transport::Outcome::Ended:
        // It may have closed its own direction alone.
        if (state_ == State::Body || (state_ == State::Head && headBegan_))
            throw cutShort();
        close();
        return false;
    case Transport::Outcome::Failed:
        close();
    }
    return false;
}

void Connection::wait(Socket::wait_type what, Step next)
{
    if (paced_)
        setDeadline(pace_.beginWait(Clock::now()));
    socket_.async_wait(
        what, [self = shared_from_this(), turn = ++turn_, next](const boost::system::error_code&) {
            if (turn != self->turn_ || self->state_ == State::Closed)
                return;
            if (self->paced_ && !self->pace_.endWait(Clock::now(), self->moved()))
                self->go(&Connection::outOfTime);
            else
                self->go(next);
        });
}

void Connection::yield(Step next)
{
    boost::asio::post(socket_.get_executor(), [self = shared_from_this(), turn = ++turn_, next] {
        if (turn == self->turn_ && self->state_ != State::Closed)
            self->go(next);
    });
}

void Connection::go(Step step)
{
    try {
        try {
            (this->*step)();
        } catch (const Refusal& refusal) {
            refuse(refusal);
        }
    } catch (const std::exception& error) {
        spdlog::error("A connection: {}", error.what());
        close();
    }
}

void Connection::work(Lane lane, std::function<void()> task, Step next)
{
    const bool isResponding = std::exchange(state_, State::Working) == State::Responding;
    setDeadline(Time::max());
    ++turn_;
    const auto inWorker = [self = shared_from_this(), task = std::move(task), next] {
        Step then = next;
        try {
            task();
        } catch (const std::exception& error) {
            spdlog::error("A connection: {}", error.what());
            then = &Connection::close;
        }
        boost::asio::post(self->socket_.get_executor(), [self, then] {
            if (self->state_ != State::Closed)
                self->go(then);
        });
    };
    if (front_.workers.run(lane, inWorker))
        return;
    if (isResponding || isShaking_)
        return close();
    refuse(Refusal("The platform has too much to do; try again in a moment", 503).retriedAfter(busySeconds));
}

std::uint64_t Connection::moved() const
{
    if (state_ != State::Responding)
        return bytesRead_;
    return bytesWritten_ - std::min<std::uint64_t>(transport_->underway(), bytesWritten_);
}

void Connection::setDeadline(Time deadline)
{
    deadline_ = deadline;
    scheduleTimer();
}

void Connection::scheduleTimer()
{
    if (deadline_ == Time::max() || (scheduled_ && *scheduled_ <= deadline_))
        return;
    scheduled_ = deadline_;
    timer_.expires_at(deadline_);
    timer_.async_wait([self = shared_from_this()](const boost::system::error_code& error) {
        if (!error && self->state_ != State::Closed)
            self->timerEnded();
    });
}

void Connection::timerEnded()
{
    scheduled_.reset();
    const Time now = Clock::now();
    if (now < deadline_)
        return scheduleTimer();
    if (paced_ && pace_.endWait(now, moved()))
        return setDeadline(pace_.beginWait(now));
    go(&Connection::outOfTime);
}

void Connection::outOfTime()
{
    ++turn_;
    socket_.cancel();
    if (state_ == State::Body || (state_ == State::Head && headBegan_))
        throw Refusal("The request came too slowly", 408);
    if (state_ == State::Head)
        return beginLingering();
    close();
}

void Connection::endSoon()
{
    if (isShaking_ || state_ == State::Handshake || state_ == State::Head || state_ == State::Lingering)
        close();
    else
        keepsAlive_ = false;
}

void Connection::close()
{
    if (state_ == State::Closed)
        return;
    state_ = State::Closed;
    ++turn_;
    watch_->leave();
    timer_.cancel();
    boost::system::error_code ignored;
    if (isShaking_) // a worker uses it; it is closed with this object
        socket_.shutdown(Socket::shutdown_both, ignored);
    else
        socket_.close(ignored);
    all_.erase(shared_from_this());
}

} // namespace local_platform
