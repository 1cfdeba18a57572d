// SPDX-License-Identifier: MIT
#include "http/Server.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <httplib.h>
#include <nlohmann/json.hpp>
#include <spdlog/spdlog.h>
#include <stdexcept>

namespace local_platform {

namespace {

// A connection holds its thread while it is open, so this is how many clients are served at a time.
constexpr std::size_t threads = 256;
constexpr int pendingConnections = 1024;
constexpr int idleSeconds = 5;
constexpr int stalledSeconds = 30;
constexpr std::size_t formOverhead = 1u << 20;

/// "host:port" or "[v6]:port"
std::pair<std::string, int> hostAndPort(const std::string& listen)
{
    const std::size_t colon = listen.rfind(':');
    const std::string port = colon == std::string::npos ? std::string() : listen.substr(colon + 1);
    const long long number = port == "0" ? 0 : std::strtoll(port.c_str(), nullptr, 10);
    std::string host = listen.substr(0, colon);
    if (host.size() > 2 && host.front() == '[' && host.back() == ']')
        host = host.substr(1, host.size() - 2);
    if (host.empty() || port.empty()
        || !std::all_of(port.begin(), port.end(), [](char c) { return c >= '0' && c <= '9'; })
        || number > 65535)
        throw std::invalid_argument("Not an address to listen at: " + listen + " (host:port is wanted)");
    return {host, static_cast<int>(number)};
}

void writeJson(httplib::Response& response, const Json& document)
{
    response.set_content(serialized(document), "application/json; charset=utf-8");
}

void writeFailure(httplib::Response& response, int status, int code, const std::string& message)
{
    response.status = status;
    writeJson(response, failure(code, message));
}

/// The part of a file that is asked for, within it; nothing, for all of it, where none or several are.
httplib::Ranges fitted(const httplib::Ranges& wanted, std::uint64_t fileSize)
{
    if (wanted.size() != 1)
        return {};
    auto [first, last] = wanted.front();
    const auto size = static_cast<ssize_t>(fileSize);
    if (first < 0) // so many from the end
        return {{std::max<ssize_t>(size - last, 0), size - 1}};
    last = last < 0 ? size - 1 : std::min(last, size - 1);
    if (first > last)
        throw Refusal("The file has no such part", 416);
    return {{first, last}};
}

struct ReplyWriter
{
    const httplib::Ranges& wanted;
    const std::string condition; ///< of the wanted part: which file it was of; empty for none
    httplib::Ranges& ranges; ///< what the library sends of the body
    httplib::Response& response;

    void operator()(const Json& document) const { writeJson(response, document); }

    void operator()(const Xml& xml) const
    {
        response.status = xml.status;
        for (const auto& [name, value] : xml.headers)
            response.set_header(name, value);
        response.set_content(xml.text, "text/xml; charset=utf-8");
    }

    void operator()(Download& download) const
    {
        const std::string tag = '"' + download.sha256 + '"';
        const bool isSameFile = condition.empty() || (!download.sha256.empty() && condition == tag);
        ranges = isSameFile ? fitted(wanted, download.file.size()) : httplib::Ranges();
        // One is of the bytes that come, the other of the whole file, whatever part of it was asked for.
        if (!ranges.empty())
            response.status = 206;
        else if (!download.sha256.empty())
            response.set_header("Content-Digest", "sha-256=:" + download.sha256 + ":");
        if (!download.sha256.empty()) {
            response.set_header("Digest", "sha-256=" + download.sha256);
            response.set_header("ETag", tag);
            response.set_header("Accept-Ranges", "bytes");
        }
        const auto shared = std::make_shared<OpenFile>(std::move(download.file));
        const auto provider = [shared](std::size_t offset, std::size_t length, httplib::DataSink& sink) {
            std::array<char, 64u << 10> buffer;
            const long got = shared->read(offset, buffer.data(), std::min(length, buffer.size()));
            return got > 0 && sink.write(buffer.data(), static_cast<std::size_t>(got));
        };
        response.set_content_provider(shared->size(), "application/octet-stream", provider);
    }
};

} // namespace

Server::Server(Endpoint answer, const Options& options)
    : answer_(std::move(answer))
{
    const bool secure = !options.tlsCertificate.empty();
    if (secure)
        http_ = std::make_unique<httplib::SSLServer>(options.tlsCertificate.c_str(), options.tlsKey.c_str());
    else
        http_ = std::make_unique<httplib::Server>();
    if (!http_->is_valid())
        throw std::runtime_error("The TLS certificate or its key cannot be used");

    http_->new_task_queue = [] { return new httplib::ThreadPool(threads); };
    http_->set_tcp_nodelay(true);
    http_->set_keep_alive_max_count(1000);
    http_->set_keep_alive_timeout(idleSeconds);
    http_->set_read_timeout(stalledSeconds);
    http_->set_write_timeout(stalledSeconds);
    // Base64 makes a drawing a third larger.
    largestBody_ = std::max(options.maxFileSize, options.maxDrawingSize / 3 * 4 + 4) + formOverhead;
    http_->set_payload_max_length(static_cast<std::size_t>(largestBody_));
    addHandlers();
    bind(options.listen, secure ? "https" : "http");
}

Server::~Server() = default;

void Server::addHandlers()
{
    const std::string anyPath = R"([\s\S]*)";
    const auto withBody = [this](const httplib::Request& request, httplib::Response& response,
                              const httplib::ContentReader& body) { handle(request, &body, response); };
    http_->Get(anyPath, [this](const httplib::Request& request, httplib::Response& response) {
        handle(request, nullptr, response);
    });
    http_->Post(anyPath, withBody);
    http_->Put(anyPath, withBody);
    http_->Patch(anyPath, withBody);
    http_->Delete(anyPath, withBody);
    // What the HTTP library turns down by itself, such as a malformed request, gets an envelope too.
    http_->set_error_handler([](const httplib::Request&, httplib::Response& response) {
        if (response.body.empty() && response.status >= 400)
            writeFailure(response, response.status, 1, "The request cannot be understood");
    });
}

void Server::bind(const std::string& listen, const std::string& scheme)
{
    const auto [host, port] = hostAndPort(listen);
    int listening = -1;
    http_->set_socket_options([&](socket_t socket) {
        // No SO_REUSEPORT, or two platforms would share one port without a word.
        const int on = 1;
        ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
        listening = socket;
    });
    errno = 0;
    const int bound =
        port == 0 ? http_->bind_to_any_port(host) : (http_->bind_to_port(host, port) ? port : -1);
    if (bound < 0)
        throw std::runtime_error("Cannot listen at " + listen + ": "
            + (errno != 0 ? std::strerror(errno) : "the host is unknown"));
    // The library's own queue is five long, which a burst of clients overruns.
    ::listen(listening, pendingConnections);
    http_->set_socket_options([](socket_t) {});
    address_ = scheme + "://" + listen.substr(0, listen.rfind(':')) + ":" + std::to_string(bound);
}

void Server::start()
{
    listening_ = std::thread([this] { http_->listen_after_bind(); });
    // A stop before that would go unheard.
    while (!http_->is_running())
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

void Server::stop()
{
    http_->stop();
    listening_.join();
}

void Server::handle(
    const httplib::Request& request, const httplib::ContentReader* body, httplib::Response& response)
{
    const auto start = std::chrono::steady_clock::now();
    Call call(request, body);
    // Only files are sent in part: the library would cut every body as the request says.
    auto& ranges = const_cast<httplib::Request&>(request).ranges;
    const httplib::Ranges wanted = std::exchange(ranges, {});
    try {
        if (request.get_header_value<std::uint64_t>("Content-Length") > largestBody_)
            throw Refusal(
                "The request is too large; at most " + std::to_string(largestBody_) + " bytes are taken",
                413);
        Reply reply = answer_(call);
        call.finish();
        response.status = 200;
        std::visit(ReplyWriter{wanted, request.get_header_value("If-Range"), ranges, response}, reply);
    } catch (const Refusal& refusal) {
        call.finish();
        writeFailure(response, refusal.status(), refusal.code(), refusal.what());
        if (refusal.retryAfter() > 0)
            response.set_header("Retry-After", std::to_string(refusal.retryAfter()));
    } catch (const std::exception& error) {
        call.finish();
        spdlog::error("{} {}: {}", request.method, request.path, error.what());
        writeFailure(response, 500, 1, "The platform failed; its log says why");
    }
    const auto took = std::chrono::steady_clock::now() - start;
    // No query and no body: both may hold what only the user should know.
    spdlog::debug("{} {} {} in {} ms", request.method, request.path, response.status,
        std::chrono::duration_cast<std::chrono::milliseconds>(took).count());
}

} // namespace local_platform
