// SPDX-License-Identifier: MIT
#pragma once

namespace local_platform {

/// The part of a list that is wanted.
struct Page
{
    long long limit;
    long long offset;
};

} // namespace local_platform
