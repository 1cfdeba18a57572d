// SPDX-License-Identifier: MIT
#include "Memory.h"

#include <cstdio>
#include <fstream>
#include <malloc.h>
#include <string>

namespace {

double statusMiB(const std::string& key)
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind(key + ":", 0) == 0)
            return std::stod(line.substr(key.size() + 1)) / 1024;
    }
    return 0;
}

} // namespace

MemoryPeak::MemoryPeak()
{
    malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << "5"; // the peak starts anew from here
    before = statusMiB("VmRSS");
}

double MemoryPeak::peakMiB() const
{
    return statusMiB("VmHWM") - before;
}
