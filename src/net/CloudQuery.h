// SPDX-License-Identifier: MIT
#pragma once

#include "tav_cloud_platform_sdk_export.h"

#include <QString>

/// \a text as it can stand in a query: everything but ASCII letters and digits, "-", ".", "_" and "~" is
/// percent-encoded, as UTF-8. The operations send their query arguments as they are; without this "#" would
/// end the query, "&" begin another field, and "+" arrive as a blank.
///
/// Any thread; does not block.
TAV_CLOUD_PLATFORM_SDK_EXPORT QString cloudQueryValue(const QString& text);
