// SPDX-License-Identifier: MIT
#pragma once

#include "store/Database.h"

#include <string>

namespace local_platform {

/// Adds alice, bob and carol where they are not there yet. Their passwords are in the README and no secret.
/// @return what to tell the developer who asked for them
std::string addDemoAccounts(Database& database, const std::string& cipherKey);

/// Whether one of them is there, from whatever start, with the password that everybody knows.
bool hasDemoAccounts(Database& database, const std::string& cipherKey);

} // namespace local_platform
