// SPDX-License-Identifier: MIT
#pragma once

#include "base/Options.h"

namespace local_platform {

/// Prints what would keep a platform from starting with these options, or is warned of at its start, and
/// changes nothing. Returns an exit code: 0 when it would start.
int checkConfig(const Options& options);

} // namespace local_platform
