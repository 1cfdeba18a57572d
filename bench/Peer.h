// SPDX-License-Identifier: MIT
#pragma once

#include <string>

/// Starts the far end of the measurements in a process of its own, so that its memory and its work are not
/// counted, and returns its base address. It answers a POST, once it has read and thrown away the body, and a
/// GET of anything but "/blob/SIZE" with a small JSON object, and "/blob/SIZE" with that many bytes. It ends
/// with the caller.
std::string startPeer();
