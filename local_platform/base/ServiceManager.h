// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace local_platform {

/// Tells the service manager that started this program, if one did, how it is: "READY=1" and the like, a line
/// each.
void tellServiceManager(const std::string& state);
/// Whether standard error goes to the journal, which knows the level of a line that begins with <N>.
bool logsToJournal();

} // namespace local_platform
