// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArrayList>

#include <cstdlib>

/// The bodies of the replies to the next requests, one each; requests after them time out.
inline QByteArrayList replies;

/// Makes a promise that does not hold a finding, as a crash is.
inline void require(bool holds)
{
    if (!holds)
        std::abort();
}

inline QByteArray bytesOf(const uint8_t* data, size_t size)
{
    return QByteArray(reinterpret_cast<const char*>(data), int(size));
}
