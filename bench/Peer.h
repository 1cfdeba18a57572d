// SPDX-License-Identifier: MIT
#pragma once

#include <string>

/// Starts the far end of the measurements in a process of its own, so that its memory and its work are not
/// counted, and returns its base address. It reads a body and throws it away, and answers with a small JSON
/// object; with SIZE bytes to "/blob/SIZE"; with N projects when those for the software "sharesN" are asked
/// for; and with the unchanged drawing to a conversion. It ends with the caller.
/// \param overTls with the certificate of support/PeerIdentity.h
std::string startPeer(bool overTls = false);
