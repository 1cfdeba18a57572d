// SPDX-License-Identifier: MIT
#pragma once

#include "base/Options.h"
#include "http/Routes.h"

#include <functional>
#include <memory>
#include <string>

namespace local_platform {

/// The platform on the network.
class Server
{
public:
    /// Takes the address of the options; port 0 takes any free one. Throws when that fails.
    Server(Admission admit, const Options& options);
    ~Server();

    /// scheme://host:port
    const std::string& address() const;
    /// Serves in threads of its own from here on.
    void start();
    /// Lets end what moves, for a few seconds, and cuts the rest. False where work goes on in spite of that.
    bool stop();

private:
    class Listener;
    std::unique_ptr<Listener> listener_;
};

} // namespace local_platform
