// SPDX-License-Identifier: MIT
#include "http/Server.h"

#include "http/Connection.h"

#include <algorithm>
#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/v6_only.hpp>
#include <boost/asio/post.hpp>
#include <cerrno>
#include <chrono>
#include <deque>
#include <spdlog/spdlog.h>
#include <stdexcept>
#include <sys/resource.h>
#include <thread>

namespace local_platform {

namespace {

namespace asio = boost::asio;
using asio::ip::tcp;
using Clock = std::chrono::steady_clock;
using boost::system::error_code;

constexpr std::uint64_t formOverhead = 1u << 20;
constexpr int mostPending = 4096;
constexpr rlim_t otherFiles = 512; // of the database, of uploads and downloads
constexpr auto acceptPause = std::chrono::milliseconds(100);
// The platform is gone within 5 s.
constexpr auto endingTime = std::chrono::milliseconds(3500);
constexpr auto workEndingTime = std::chrono::milliseconds(1000);

/// "host:port" or "[v6]:port"
std::pair<std::string, std::string> hostAndPort(const std::string& listen)
{
    const std::size_t colon = listen.rfind(':');
    const std::string port = colon == std::string::npos ? std::string() : listen.substr(colon + 1);
    std::string host = listen.substr(0, colon);
    if (host.size() > 2 && host.front() == '[' && host.back() == ']')
        host = host.substr(1, host.size() - 2);
    if (host.empty() || port.empty() || port.find_first_not_of("0123456789") != std::string::npos
        || std::strtoll(port.c_str(), nullptr, 10) > 65535)
        throw std::invalid_argument("Not an address to listen at: " + listen + " (host:port is wanted)");
    return {host, port};
}

/// As many connections as are wanted, or as the system lets the process have.
int mostConnections(int wanted)
{
    struct rlimit files = {};
    if (::getrlimit(RLIMIT_NOFILE, &files) != 0)
        return wanted;
    files.rlim_cur = files.rlim_max;
    ::setrlimit(RLIMIT_NOFILE, &files);
    ::getrlimit(RLIMIT_NOFILE, &files);
    const rlim_t spare = files.rlim_cur > 2 * otherFiles ? files.rlim_cur - otherFiles : files.rlim_cur / 2;
    if (files.rlim_cur == RLIM_INFINITY || spare >= static_cast<rlim_t>(wanted))
        return wanted;
    spdlog::warn(
        "The system lets this process have {} files, so that it serves {} connections at a time and not {}",
        files.rlim_cur, spare, wanted);
    return static_cast<int>(spare);
}

std::string addressOf(const tcp::endpoint& endpoint)
{
    const asio::ip::address address = endpoint.address();
    if (address.is_v6() && address.to_v6().is_v4_mapped())
        return asio::ip::make_address_v4(asio::ip::v4_mapped, address.to_v6()).to_string();
    return address.to_string();
}

/// One thread and the connections that it serves.
struct Loop
{
    asio::io_context context{1};
    asio::executor_work_guard<asio::io_context::executor_type> work{context.get_executor()};
    Connection::Set connections;
    std::thread thread;

    template <typename Action>
    void each(Action action)
    {
        asio::post(context, [this, action] {
            for (const auto& connection : Connection::Set(connections))
                action(*connection);
        });
    }
};

} // namespace

class Server::Listener
{
public:
    Listener(Admission admit, const Options& options)
        : front_{std::move(admit), limitsFrom(options),
            options.tlsCertificate.empty()
                ? nullptr
                : std::make_unique<const Tls>(options.tlsCertificate, options.tlsKey),
            {mostConnections(options.maxConnections), options.maxConnectionsPerAddress}}
        , loops_(std::clamp(std::thread::hardware_concurrency(), 1u, 4u))
        , acceptor_(loops_.front().context)
        , pause_(loops_.front().context)
    {
        bind(options.listen);
        address_ = (front_.tls ? "https://" : "http://") + options.listen.substr(0, options.listen.rfind(':'))
            + ":" + std::to_string(acceptor_.local_endpoint().port());
    }

    const std::string& address() const { return address_; }

    void start()
    {
        accept();
        for (Loop& loop : loops_)
            loop.thread = std::thread([&loop] { loop.context.run(); });
    }

    bool stop()
    {
        const auto end = Clock::now() + endingTime;
        front_.stopping = true;
        asio::post(loops_.front().context, [this] {
            error_code ignored;
            acceptor_.close(ignored);
            pause_.cancel();
        });
        for (Loop& loop : loops_)
            loop.each([](Connection& connection) { connection.endSoon(); });
        front_.counts.waitForNone(end);
        for (Loop& loop : loops_)
            loop.each([](Connection& connection) { connection.close(); });
        const bool done = front_.workers.stop(Clock::now() + workEndingTime);
        for (Loop& loop : loops_) {
            loop.work.reset();
            asio::post(loop.context, [&loop] { loop.context.stop(); });
            if (loop.thread.joinable())
                loop.thread.join();
        }
        return done;
    }

private:
    static FrontLimits limitsFrom(const Options& options)
    {
        // Base64 makes a drawing a third larger.
        return {std::max(options.maxFileSize, options.maxDrawingSize / 3 * 4 + 4) + formOverhead,
            std::chrono::seconds(options.headTimeLimit), std::chrono::seconds(options.stallTimeLimit)};
    }

    void bind(const std::string& listen)
    {
        const auto [host, port] = hostAndPort(listen);
        error_code error;
        tcp::resolver resolver(loops_.front().context);
        const auto found = resolver.resolve(host, port, tcp::resolver::passive, error);
        if (error)
            throw std::runtime_error("Cannot listen at " + listen + ": the host is unknown");
        for (const auto& entry : found) {
            const tcp::endpoint endpoint = entry.endpoint();
            error_code ignored;
            acceptor_.close(ignored);
            acceptor_.open(endpoint.protocol(), error);
            if (error)
                continue;
            if (endpoint.address().is_v6())
                acceptor_.set_option(asio::ip::v6_only(false), ignored);
            // No SO_REUSEPORT, or two platforms would share one port without a word.
            acceptor_.set_option(tcp::acceptor::reuse_address(true), ignored);
            if (!acceptor_.bind(endpoint, error) && !acceptor_.listen(mostPending, error))
                return;
        }
        throw std::runtime_error("Cannot listen at " + listen + ": " + error.message());
    }

    void accept()
    {
        next_ = (next_ + 1) % loops_.size();
        Loop& loop = loops_[next_];
        acceptor_.async_accept(loop.context, [this, &loop](const error_code& error, tcp::socket socket) {
            if (front_.stopping || error == asio::error::operation_aborted)
                return;
            if (error) {
                // No file is left for it, most likely; it waits in the system's queue.
                pause_.expires_after(acceptPause);
                return pause_.async_wait([this](const error_code&) {
                    if (!front_.stopping)
                        accept();
                });
            }
            take(loop, std::move(socket));
            accept();
        });
    }

    void take(Loop& loop, tcp::socket socket)
    {
        error_code error;
        const tcp::endpoint peer = socket.remote_endpoint(error);
        if (error)
            return;
        std::string address = addressOf(peer);
        if (!front_.counts.add(networkOf(address)))
            return turnAway(socket);
        const auto connection =
            std::make_shared<Connection>(front_, loop.connections, std::move(socket), std::move(address));
        asio::post(loop.context, [connection] { connection->start(); });
    }

    void turnAway(tcp::socket& socket)
    {
        const auto now = Clock::now();
        if (now >= told_ + std::chrono::minutes(1)) {
            told_ = now;
            spdlog::warn("Connections are turned away: there are as many as --max-connections or"
                         " --max-connections-per-address allow");
        }
        if (front_.tls)
            return;
        const Response response =
            responseTo(Refusal("There are too many connections; try again later", 503).retriedAfter(5));
        const std::string text = headOf(response, 0) + response.body;
        error_code ignored;
        socket.non_blocking(true, ignored);
        socket.send(asio::buffer(text), 0, ignored);
        socket.shutdown(tcp::socket::shutdown_both, ignored);
    }

    Front front_;
    std::deque<Loop> loops_;
    tcp::acceptor acceptor_;
    asio::steady_timer pause_;
    std::size_t next_ = 0;
    std::string address_;
    Clock::time_point told_ = Clock::now() - std::chrono::hours(1);
};

Server::Server(Admission admit, const Options& options)
    : listener_(std::make_unique<Listener>(std::move(admit), options))
{
}

Server::~Server() = default;

const std::string& Server::address() const
{
    return listener_->address();
}

void Server::start()
{
    listener_->start();
}

bool Server::stop()
{
    return listener_->stop();
}

} // namespace local_platform
