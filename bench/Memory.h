// SPDX-License-Identifier: MIT
#pragma once

/// How far the process's resident memory rises, in MiB, between construction and peakMiB().
class MemoryPeak
{
public:
    MemoryPeak();
    double peakMiB() const;

private:
    double before;
};
