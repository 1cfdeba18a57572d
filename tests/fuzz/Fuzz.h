// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArrayList>

#include <cstdlib>

/// What the next requests are answered with, one body each; those beyond get no answer in time.
inline QByteArrayList replies;

/// A promise that does not hold is a finding, as a crash is.
inline void require(bool holds)
{
    if (!holds)
        std::abort();
}

inline QByteArray bytesOf(const uint8_t* data, size_t size)
{
    return QByteArray(reinterpret_cast<const char*>(data), int(size));
}
