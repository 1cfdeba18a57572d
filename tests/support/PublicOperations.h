// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

/// The names of the public member functions that return bool, as the class's \a header (below src/) declares
/// them: its operations. A table of operations is complete when it has a row for each. Getters are not
/// operations.
QStringList publicOperations(const QString& header);
