// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// The build's constants as the tests have them. The account session takes the address when it is first used,
/// so a test sets it before.
void setPlatformAddress(const QString& address);
