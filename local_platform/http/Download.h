// SPDX-License-Identifier: MIT
#pragma once

#include "store/FileStore.h"

#include <string>

namespace local_platform {

/// A file on its way out.
struct Download
{
    OpenFile file;
    std::string sha256; ///< of its content, in Base64; empty where it is not known
};

} // namespace local_platform
