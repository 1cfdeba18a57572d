// SPDX-License-Identifier: MIT
#include "core/Log.h"

#include <atomic>
#include <cstdio>

namespace {

void writeToStandardError(const char* text, int level)
{
    // One call for the whole line, so that lines of two threads do not mix.
    std::fprintf(stderr, "[%d] %s\n", level, text);
}

std::atomic<LogSink> currentSink{writeToStandardError};

} // namespace

void SendLogInfo(const char* text, int level)
{
    if (text)
        currentSink.load()(text, level);
}

void setLogSink(LogSink sink)
{
    currentSink = sink ? sink : writeToStandardError;
}
