// SPDX-License-Identifier: MIT
#pragma once

#include "http/ConnectionCounts.h"
#include "http/Routes.h"
#include "http/Transport.h"
#include "http/Workers.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>

namespace local_platform {

struct FrontLimits
{
    std::uint64_t largestBody;
    std::chrono::seconds headTime; ///< of a head in all; of a TLS handshake too
    std::chrono::seconds stallTime; ///< over which a body moves at least slowestRate
    static constexpr std::uint64_t slowestRate = 1024; ///< bytes a second
};

/// What all connections share.
struct Front
{
    Admission admit;
    FrontLimits limits;
    std::unique_ptr<const Tls> tls; ///< null for plain HTTP
    ConnectionCounts counts;
    std::atomic<bool> stopping{false};
    Workers workers = {};
};

} // namespace local_platform
