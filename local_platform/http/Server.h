// SPDX-License-Identifier: MIT
#pragma once

#include "base/Options.h"
#include "http/Routes.h"

#include <cstdint>
#include <memory>
#include <string>
#include <thread>

namespace httplib {
class Server;
struct Request;
struct Response;
class ContentReader;
} // namespace httplib

namespace local_platform {

/// The platform on the network.
class Server
{
public:
    /// Takes the address of the options; port 0 takes any free one. Throws when that fails.
    Server(Endpoint answer, const Options& options);
    ~Server();

    /// scheme://host:port
    const std::string& address() const { return address_; }
    /// Serves in threads of its own from here on.
    void start();
    /// Waits for the requests that are being answered.
    void stop();

private:
    void addHandlers();
    void bind(const std::string& listen, const std::string& scheme);
    void handle(
        const httplib::Request& request, const httplib::ContentReader* body, httplib::Response& response);

    Endpoint answer_;
    std::unique_ptr<httplib::Server> http_;
    std::thread listening_;
    std::string address_;
    std::uint64_t largestBody_ = 0;
};

} // namespace local_platform
