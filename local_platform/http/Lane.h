// SPDX-License-Identifier: MIT
#pragma once

namespace local_platform {

/// What work has threads of its own, so that it never waits for other work.
enum class Lane
{
    Usual,
    SignIn, ///< hashes passwords
    Conversion,
    Transfer, ///< reads and writes pieces of files
    Handshake ///< of TLS
};

} // namespace local_platform
