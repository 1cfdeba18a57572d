// SPDX-License-Identifier: MIT
#pragma once

namespace local_platform {

/// What work has threads of its own, so that it never waits for other work.
enum class Lane
{
    Usual,
    SignIn, ///< hashes passwords
    Conversion,
    Receiving, ///< writes pieces of files, which may wait for the disk
    Sending, ///< reads pieces of files
    Handshake ///< of TLS
};

} // namespace local_platform
