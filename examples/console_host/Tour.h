// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

/// Takes the file named by the one argument through the whole journey, and tells of each step what it did and
/// how long it took. False at the first step that fails.
bool tour(const QStringList& arguments);
