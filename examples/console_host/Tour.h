// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

/// Backs up the file that the one argument names, downloads it again and compares the bytes. Prints what each
/// step did and how long it took. False at the first step that fails.
bool tour(const QStringList& arguments);
