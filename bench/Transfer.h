// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// The base address of the far end that main() started.
QString peerAddress();
