// SPDX-License-Identifier: MIT
#pragma once

#include "core/tav_host_core_export.h"

/// Receives the lines of the log. Called on the thread that logs; \a text is never null and valid during the
/// call only.
using LogSink = void (*)(const char* text, int level);

/// Writes one line to the host's log.
/// \param text in the local 8-bit encoding, without a line end; null is harmless and writes nothing
/// \param level the host's own grading, handed on as it is
///
/// May be called from any thread.
TAV_HOST_CORE_EXPORT void SendLogInfo(const char* text, int level);

/// Sends the log to \a sink from now on; null brings back standard error. May be called from any thread.
TAV_HOST_CORE_EXPORT void setLogSink(LogSink sink);
