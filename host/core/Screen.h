// SPDX-License-Identifier: MIT
#pragma once

#include "core/tav_host_core_export.h"

/// A length in device-independent pixels, scaled to what a widget's geometry takes on the primary screen.
///
/// Scales by that screen's logical resolution over the platform's own of scale 1 (96 dots per inch; 72 on
/// macOS). With Qt's high-DPI scaling off, this is the desktop's whole scale. With it on, Qt multiplies
/// widget geometry itself and reports the logical resolution less what it multiplies by, so only the rest is
/// left (usually nothing) and no length is scaled twice. Returns the length unchanged when there is no
/// QGuiApplication or no screen.
///
/// GUI thread only.
TAV_HOST_CORE_EXPORT double dpi_scaled(double deviceIndependentLength);
